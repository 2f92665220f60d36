#include <string>

#include <Quill.h>

#include "Command.h"

namespace QuillTool {

namespace {

class KitCommand : public Command {
public:
    void describe(CLI::App& parser) override { addJsonFlag(parser, m_Json); }

    ExitCode run(Context& context) override {
        if (!isZephInstalled()) {
            throw ToolError(ExitCode::NotFound, "driver kit: is not installed");
        }
        const std::string version = attempt("driver kit: its version cannot be read", getZephVersion);
        if (m_Json) {
            context.output.printJson(Json{{"version", version}});
        } else {
            context.output.printLine(version);
        }
        return ExitCode::Done;
    }

private:
    bool m_Json = false;
};

} // namespace

CommandDescription kitCommand() {
    return {"kit", "Show the version of the installed driver kit",
            "Where it is not installed, the exit code is 3.\n\n"
            "Examples:\n"
            "  quill kit\n"
            "  quill kit --json | jq -r .version\n",
            makeCommand<KitCommand>};
}

} // namespace QuillTool
