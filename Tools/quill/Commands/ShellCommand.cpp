// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands/Command.h"
#include "Commands/CommandLine.h"
#include "Commands/Completion.h"
#include "Terminal/LineReader.h"
#include "Terminal/WordSplitter.h"

namespace QuillTool {

namespace {

class ShellCommand : public Command {
public:
    void describe(CLI::App& /*parser*/) override {}

    ExitCode run(Context& context) override {
        if (context.inShell) {
            throw ToolError(ExitCode::Usage, "shell: the shell is already running");
        }
        Context inside{context.session, context.output, context.interrupt, true};
        const std::unique_ptr<LineReader> lines = makeLineReader(
            context.interrupt, [&inside](const std::vector<std::string>& words) { return completions(words, inside); });
        ExitCode firstFailure = ExitCode::Done;
        for (int number = 1; const std::optional<std::string> line = lines->next(); ++number) {
            if (!lines->isInteractive()) {
                context.output.setPlace(fmt::format("line {}", number));
            }
            const std::optional<ExitCode> code = runLine(*line, inside);
            if (!code) {
                break;
            }
            if (firstFailure == ExitCode::Done) {
                firstFailure = *code;
            }
            if (lines->isInteractive() && context.interrupt.requested()) {
                context.interrupt.clear(); // ends the command, not the session
                context.output.printLine("");
            }
        }
        context.output.setPlace("");
        return lines->isInteractive() ? ExitCode::Done : firstFailure;
    }

private:
    /// @return nothing if the line ends the session
    static std::optional<ExitCode> runLine(const std::string& line, Context& context) {
        std::vector<std::string> words;
        try {
            words = splitWords(line);
        } catch (const ToolError& failure) {
            context.output.fail(failure.what());
            return failure.code();
        }
        if (words.empty()) {
            return ExitCode::Done;
        }
        if (words.front() == "exit" || words.front() == "quit") {
            return std::nullopt;
        }
        return runCommandLine(words, context);
    }
};

} // namespace

CommandDescription shellCommand() {
    return {"shell", "Run commands in one session, from a prompt or a pipe",
            "Each line is a command line without 'quill'. Cameras stay connected between\n"
            "lines. Quote words as in a shell. '#' begins a comment, 'help' lists the\n"
            "commands, 'exit' or 'quit' ends the session. A command that fails does not end\n"
            "the session; a script ends with the exit code of its first failure.\n\n"
            "At the prompt, Tab completes a word or lists what it can become. Lines are kept\n"
            "for later sessions in ~/.local/state/quill/history.\n\n"
            "Examples:\n"
            "  quill shell\n"
            "  quill shell < setup.quill\n"
            "  printf '%s\\n' 'set 90001 Gamma 1.8' 'capture 90001 -o f.png' | quill shell\n",
            makeCommand<ShellCommand>};
}

} // namespace QuillTool
