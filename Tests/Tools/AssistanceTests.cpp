// SPDX-License-Identifier: Apache-2.0

// What helps people to write command lines and lists of cameras.

#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ToolFixture.h"

namespace {

using ::testing::HasSubstr;
using namespace TestSupport;

class Assistance : public ToolFixture {
protected:
    Assistance() : ToolFixture("Cameras.json") {}
};

TEST_F(Assistance, NamesTheLinesOfAListThatTheLibraryWouldLeaveOut) {
    const std::string property =
        R"("Maximum": "9", "Default": "3", "ReadOnly": false, "AvailableForWriting": true, "Discrete": false, "ValueList": [])";
    const auto listWith = [](const std::string& properties) {
        return "{\"Cameras\": [{\"Identification\": {\"Model Name\": \"A\", \"Serial Number\": "
               "\"1\"},\n\"Properties\": [\n" +
               properties + "],\n\"Functions\": []}]}";
    };
    const std::pair<std::string, std::string> cases[] = {
        {listWith(R"({"Name": "Gain", "Type": "Float", "Minimum": "0", )" + property + "}"),
         "1 cameras, 1 properties, 0 functions"},
        {listWith(R"({"Name": "Gain", "Type": "Real", "Minimum": "0", )" + property + "}"),
         ":3: Cameras[0] / Properties[0] \"Gain\": \"Type\" is \"Real\""},
        {listWith("{\"Name\": \"Gain\", \"Type\": \"Float\",\n\"Minimum\": 0\n, " + property + "}"),
         ":4: Cameras[0] / Properties[0] \"Gain\": \"Minimum\" is a number"},
        {listWith(R"({"Name": "Gain", "Type": "Float", "Minimum": "4", )" + property + "}"),
         ":3: Cameras[0] / Properties[0] \"Gain\": \"Default\" is not between"},
        {listWith(R"({"Name": "Gain", "Minimum": "4", )" + property + "}"), "has no key \"Type\""},
        {"{\n\"Cameras\": [\n}", ":3: syntax error"},
        {std::string(100, '['), "more than 64 levels"},
        {"{\"cameras\": []}", "did you mean \"Cameras\"?"},
    };
    for (const auto& [document, said] : cases) {
        const ChildResult result = run({"check", m_Folder.write("checked.json", document)});
        EXPECT_THAT(result.output, HasSubstr(said));
        EXPECT_EQ(result.exitCode, &said == &cases[0].second ? 0 : 1) << said;
    }
}

TEST_F(Assistance, CompletesTheLastWord) {
    const std::pair<Words, std::string> cases[] = {
        {{"fl"}, "flash\n"},
        {{"flash", "r"}, "read\n"},
        {{"get", "900"}, "90001\n90002\n"},
        {{"set", "90001", "Sh"}, "Shutter=\n"},
        {{"set", "90001", "Shutter=R"}, "Shutter=Rolling\n"},
        {{"capture", "--format", "RGB", "90001", "--set", "Shutter=G"}, "Shutter=Global\n"},
        {{"get", "90001", "Gain", "Wi"}, "Width\n"},
        {{"perform", "90001", "Read"}, "Read Flash\n"},
        {{"convert", "a.raw", "--from", "BAYER_R"}, "BAYER_RGGB\n"},
        {{"capture", "90001", "--stil"}, "--still\n"},
        {{"get", "none", ""}, ""},
        {{"frobnicate", ""}, ""},
    };
    for (const auto& [begun, candidates] : cases) {
        Words words{"completion", "words", "--"};
        words.insert(words.end(), begun.begin(), begun.end());
        const ChildResult result = run(words);
        EXPECT_EQ(result.exitCode, 0) << begun.back();
        EXPECT_EQ(result.output, candidates) << begun.back();
    }
    // As bash splits the line, with its quotes and signs of equality.
    ChildProcess bash =
        shellCommand("quill() { \"$0\" \"$@\"; }; command() { \"$@\"; }; eval \"$(quill completion bash)\";"
                     "COMP_WORDS=(quill set 90001 Shutter = R); COMP_CWORD=5; _quill; echo ${COMPREPLY[*]}");
    bash.program = "bash";
    EXPECT_EQ(runChild(bash).output, "Rolling\n");
}

} // namespace
