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

/// Opens closed standard streams on descriptors that fail on every use, so that no file opened later takes their
/// numbers.
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
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); // writing to a closed standard output fails with EPIPE
    Output output;
    try {
        Interrupt interrupt;
        return static_cast<int>(run({argv + (argc > 0 ? 1 : 0), argv + argc}, output, interrupt));
    } catch (const std::exception& failure) {
        output.fail(reasonOf(failure));
        return static_cast<int>(ExitCode::Failed);
    }
}
