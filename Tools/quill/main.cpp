// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Commands/CommandLine.h"

namespace {

using namespace QuillTool;

/// Gives closed standard streams a descriptor on which every use fails, so that no file that is opened later takes
/// their place.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

ExitCode run(const std::vector<std::string>& words, Output& output, Interrupt& interrupt) {
    Session session(output);
    Context context{session, output, interrupt};
    try {
        const ExitCode code = runCommandLine(words, context);
        return interrupt.requested() ? ExitCode::Interrupted : code;
    } catch (const OutputClosed&) {
        return ExitCode::Done;
    }
}

} // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // a closed standard output is an error of writing
    Output output;
    try {
        Interrupt interrupt;
        return static_cast<int>(run({argv + (argc > 0 ? 1 : 0), argv + argc}, output, interrupt));
    } catch (const std::exception& failure) {
        output.fail(reasonOf(failure));
        return static_cast<int>(ExitCode::Failed);
    }
}
