// SPDX-License-Identifier: Apache-2.0

#include <exception>
#include <string>
#include <vector>

#include "Commands/CommandLine.h"
#include "Terminal/StandardStreams.h"

namespace {

using namespace QuillTool;

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
    prepareStandardStreams();
    Output output;
    try {
        Interrupt interrupt;
        return static_cast<int>(run(programArguments(argc, argv), output, interrupt));
    } catch (const std::exception& failure) {
        output.fail(reasonOf(failure));
        return static_cast<int>(ExitCode::Failed);
    }
}
