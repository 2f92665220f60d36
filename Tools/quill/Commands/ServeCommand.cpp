// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands/Command.h"
#include "Commands/ServeDescription.h"
#include "Serve/Network/Server.h"

namespace QuillTool {

namespace {

/// @throws ToolError  the file cannot be read, or its first line is no token
std::string readToken(const std::string& path) {
    errno = 0;
    std::ifstream file(path);
    std::string token;
    if (!std::getline(file, token)) {
        throw ToolError(ExitCode::Failed,
                        fmt::format("serve: --token-file: '{}' cannot be read: {}", path,
                                    errno == 0 ? "it is empty" : std::generic_category().message(errno)));
    }
    if (!Serve::isUsableToken(token)) {
        throw ToolError(ExitCode::Usage, fmt::format("serve: --token-file: the first line of '{}' is no token: 16 to "
                                                     "256 letters, digits and '-._~+/='",
                                                     path));
    }
    return token;
}

class ServeCommand : public Command {
public:
    void describe(CLI::App& parser) override { m_Options.describe(parser); }

    ExitCode run(Context& context) override {
        if (context.inShell) {
            throw ToolError(ExitCode::Usage, "serve: does not run in the shell; it has cameras of its own");
        }
        Serve::Listening listening(m_Options.address, m_Options.port);
        const std::string token = chooseToken(listening.address());
        const Serve::AccessRules access(listening.port(), listening.address(), m_Options.allowedHosts, token);
        Serve::EventHub events;
        Serve::CameraService cameras(
            [&events](const std::string& event, const Json& data) { events.publish(event, data); },
            m_Options.isViewOnly);
        events.onListening([&cameras](bool isAnybody) { cameras.setListening(isAnybody); });
        const Serve::Server server(listening, {cameras, events, access, m_Options.isViewOnly});
        context.output.printLine(fmt::format("Quill is at http://{}:{}/{}", listening.urlHost(), listening.port(),
                                             token.empty() ? "" : "#token=" + token));
        context.output.flush();
        waitForInterrupt(context.interrupt);
        cameras.endRecordings();
        return ExitCode::Interrupted;
    }

private:
    /// Loopback needs no token: who has an account on this machine has its cameras, too.
    std::string chooseToken(const std::string& address) const {
        if (!m_Options.tokenFile.empty()) {
            return readToken(m_Options.tokenFile);
        }
        return Serve::isLoopback(address) ? "" : Serve::makeToken();
    }

    static void waitForInterrupt(const Interrupt& interrupt) { waitForAny({&interrupt.waker()}); }

    ServeOptions m_Options;
};

} // namespace

CommandDescription serveCommand() {
    return {"serve", kServeSummary, kServeDetails, makeCommand<ServeCommand>};
}

} // namespace QuillTool
