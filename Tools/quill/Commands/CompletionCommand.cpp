// SPDX-License-Identifier: Apache-2.0

#include <map>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Commands/Command.h"
#include "Commands/Completion.h"
#include "Commands/CompletionScripts.h"

namespace QuillTool {

namespace {

class CompletionCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        parser.add_option("SHELL", m_Shell, "Whose script is printed; 'words' prints what the last word can become")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish", "words"}));
        parser.add_option("WORD", m_Words, "With 'words', after '--': the command line so far, without 'quill'");
    }

    ExitCode run(Context& context) override {
        static const std::map<std::string, const char*> kScripts{
            {"bash", kBashScript}, {"zsh", kZshScript}, {"fish", kFishScript}};
        if (const auto script = kScripts.find(m_Shell); script != kScripts.end()) {
            context.output.print(script->second);
            return ExitCode::Done;
        }
        for (const std::string& candidate : completions(m_Words, context)) {
            context.output.printLine(candidate);
        }
        return ExitCode::Done;
    }

private:
    std::string m_Shell;
    std::vector<std::string> m_Words;
};

} // namespace

CommandDescription completionCommand() {
    return {"completion", "Print a shell's completion of quill's command lines",
            "Completes commands, options, serial numbers, names of properties and functions,\n"
            "values and formats. To complete a camera's names, the camera is connected for a\n"
            "moment; one that is in use elsewhere has none.\n\n"
            "Examples:\n"
            "  eval \"$(quill completion bash)\"\n"
            "  source <(quill completion zsh)\n"
            "  quill completion fish | source\n",
            makeCommand<CompletionCommand>};
}

} // namespace QuillTool
