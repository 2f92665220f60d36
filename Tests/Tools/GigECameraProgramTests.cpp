// SPDX-License-Identifier: Apache-2.0

// The program that runs a GigE Vision camera in software.

#include <csignal>

#include <gmock/gmock.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"
#include "Tools/ChildProcess.h"

namespace {

using namespace TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

/// A loopback address that no other test has.
std::string ownAddress() {
    return "127.8." + std::to_string(getpid() >> 8 & 0xFF) + "." + std::to_string(getpid() & 0xFF);
}

TEST(GigECameraProgram, ObeysStandardInputAndPrintsItsCounts) {
    const TemporaryFolder folder;
    const std::string input = folder.write("input", "loss 1\nloss 101\nquite\ncolour red\nsilent on\n");
    const ChildResult result =
        runChild({QUILL_GIGE_CAMERA, {"--address", ownAddress(), "--fps=5", "--deny", "--until-eof"}, {}, input});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, StartsWith("ready " + ownAddress() + "\nok loss 1\nerror: '101' is no value of loss"));
    EXPECT_THAT(result.output, HasSubstr("error: 'quite' has no value"));
    EXPECT_THAT(result.output, HasSubstr("error: 'colour' is unknown; known are loss, reorder"));
    EXPECT_THAT(result.output, HasSubstr("\nok silent on\n{\"framesSent\": 0, \"packetsSent\": 0, "));
}

TEST(GigECameraProgram, EndsBySignals) {
    for (const int signal : {SIGTERM, SIGINT}) {
        ChildProcess camera{QUILL_GIGE_CAMERA, {"--address", ownAddress()}, {}};
        camera.reactions = {{"ready", [signal](pid_t process) { kill(process, signal); }}};
        const ChildResult result = runChild(camera);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("\n{\"framesSent\": 0"));
    }
}

TEST(GigECameraProgram, SaysWhatIsWrongWithItsCommandLine) {
    const struct {
        std::vector<std::string> words;
        int exitCode;
        const char* error;
    } cases[] = {{{"--fsp", "3"}, 2, "'--fsp' is no option"},
                 {{"--fps"}, 2, "'--fps' needs RATE"},
                 {{"--size", "17x20"}, 2, "W a multiple of 4"},
                 {{"--deny=1"}, 2, "'--deny' takes no value"},
                 {{"--loss", "nan"}, 2, "'nan' is no value of --loss PERCENT"},
                 {{"--mac", "02:00:00:00:00:1"}, 2, "such as 02:00:7F:00:00:01"},
                 {{"--address", "127.0.0.256"}, 2, "no IPv4 address such as 127.0.0.1"},
                 {{"--xml", "/none"}, 1, "'/none' cannot be read"},
                 {{"--card", "none"}, 1, "see 'ip address'"}};
    for (const auto& [words, exitCode, error] : cases) {
        const ChildResult result = runChild({QUILL_GIGE_CAMERA, words, {}});
        EXPECT_EQ(result.exitCode, exitCode) << words[0];
        EXPECT_THAT(result.errors, HasSubstr(error));
        EXPECT_EQ(result.output, "");
    }
}

} // namespace
