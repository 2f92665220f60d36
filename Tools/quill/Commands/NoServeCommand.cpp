// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Commands/Command.h"
#include "Commands/ServeDescription.h"

namespace QuillTool {

namespace {

/// Takes the place of the command where the tool was built without it.
class NoServeCommand : public Command {
public:
    void describe(CLI::App& parser) override { m_Options.describe(parser); }

    ExitCode run(Context& /*context*/) override {
        throw ToolError(ExitCode::Failed, "serve: this quill was built without it: building it takes Boost's headers "
                                          "and libjpeg-turbo, and QUILL_BUILD_SERVE=ON");
    }

private:
    ServeOptions m_Options;
};

} // namespace

CommandDescription serveCommand() {
    return {"serve", kServeSummary, kServeDetails, makeCommand<NoServeCommand>};
}

} // namespace QuillTool
