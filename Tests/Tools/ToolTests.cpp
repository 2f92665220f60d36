// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ToolFixture.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using namespace TestSupport;

class Tool : public ToolFixture {
protected:
    Tool() : ToolFixture("Cameras.json") {}
};

/// Words, exit code, and a part of the output: of standard output if the exit code is 0, otherwise of the one line on
/// standard error.
struct CommandCase {
    Words words;
    int exitCode;
    std::string said;
};

TEST_F(Tool, EndsWithTheDocumentedCodeAndSaysWhy) {
    const CommandCase cases[] = {
        {{"info", "8"}, 0, "Model Name     Three\n"},
        {{"properties", "90001"}, 0, "[Device Control]\nModel Name  String   One     -     -     read-only    -\n"},
        {{"describe", "90001", "Width"}, 0, "Unit         px\nWritability  writable\nMinimum      8\n"},
        {{"get", "90001", "Gain"}, 0, "1.5\n"},
        {{"get", "90001", "Gain", "Width"}, 0, "Width  640\n"},
        {{"set", "90001", "Gain", "024"}, 0, "Gain = 24\n"},
        {{"set", "90001", "Width", "0x280"}, 0, "Width = 640\n"},
        {{"set", "90001", "Shutter", "Rolling"}, 0, "Shutter = Rolling\n"},
        {{"set", "90001", "Shutter=Rolling", "Width=64"}, 0, "Shutter = Rolling\nWidth = 64\n"},
        {{"functions", "90001"}, 0, "Read Flash   Address:Integer, Length:Integer  Data:String  yes\n"},
        {{"perform", "90001", "Read Flash", "0", "2"}, 0, "00000000  ff ff  "},
        {{"conform", "90001"}, 0, "a simulated camera, firmware unknown: 217 answers, 0 not as documented\n"},
        {{"conversions"}, 0, "\nBAYER_RGGB   RGB          BAYER_RGGB_TO_RGB\n"},
        {{"--version"}, 0, "quill "},
        {{"--help"}, 0, "130  interrupted"},
        {{"help", "perform"}, 0, "Usage: quill perform [OPTIONS] SERIAL NAME"},
        {{"help", "capture"}, 0, "Examples:\n  quill capture 41500101 -o"}, // with a picture
        {{"set", "90001", "Gain", "-0.1"}, 1, "property 'Gain': cannot be set to '-0.1': the range is 0.0 .. 24.0"},
        {{"set", "90001", "Gain", "1,5"}, 2, "it takes a number, decimal or hexadecimal as 0x..."},
        {{"set", "90001", "Width", "8.5"}, 2, "it takes a whole number"},
        {{"set", "90001", "Width", "101"}, 1, "it takes multiples of 8; the nearest are 96 and 104"},
        {{"set", "90001", "Shutter", "rolling"}, 1, "the choices are Global | Rolling"},
        {{"set", "90001", "Model Name", "x"},
         1,
         "camera 90001: property 'Model Name': cannot be set to 'x': it is read-only and stays 'One'"},
        {{"perform", "90001", "Read Flash", "zz", "2"},
         2,
         "'Read Flash': cannot be performed with 'zz', '2': Address takes a whole number"},
        {{"perform", "90001", "Read Flash", "4294967295", "2"}, 1, "a number is too large or too small"},
        {{"perform", "90001", "Read Flash", "0", "-1"}, 1, "Failed to execute function."},
        {{"perform", "90001", "Write Flash", "0", "@/nonexistent"},
         1,
         "file '/nonexistent': cannot be read: No such file"},
        {{"perform", "90001", "Read Flash", "0", "8", "-o", "/nonexistent/flash.bin"}, 1, "/nonexistent/flash.bin"},
        {{"convert", "/nonexistent.png", "-o", "x.pgm"}, 1, "/nonexistent.png"},
        {{"perform", "90001", "Write Flash", "0", "hex:123"}, 2, "the number of digits is odd"},
        {{"perform", "90001", "Write Flash"}, 2, "missing arguments: Address:Integer, Data:String"},
        {{"perform", "90001", "Write Flash", "0", "a", "b"}, 2, "too many arguments"},
        {{"convert", "x.png", "--to", "PINK", "-o", "x.pgm"}, 2, "PINK: no such format; available: MONO, BAYER_RGGB"},
        {{"convert", "x.png", "--width", "3", "-o", "x.pgm"}, 2, "--width requires --from"},
        {{"capture", "90001", "-o", "x.jpeg"}, 2, "x.jpeg"},
        {{"capture", "90001", "-o", "x.png", "--count", ""}, 2, "--count: '' is not a whole number"},
        {{"info", ""}, 2, "SERIAL: the text is empty"},
        {{"info", "900"}, 2, "camera '900': matches several: 90001, 90002"},
        {{"get", "90001"}, 2, "NAME is required"},
        {{"frobnicate"}, 2, "unknown command 'frobnicate'; try 'quill --help'"},
        {{"help", "frobnicate"}, 2, "unknown command 'frobnicate'; try 'quill --help'"},
        {{"--frob", "get"}, 2, "unknown command '--frob'; try 'quill --help'"},
        {{}, 2, "a command is missing"},
        {{"list", "--genicam"}, 2, "--genicam: a network card or an address is missing"},
        {{"--genicam=eth1,a/b", "list"}, 2, "--genicam: 'eth1,a/b' are not names of network cards and IPv4 addresses"},
        {{"info", "7"}, 3, "camera '7': not found; there are: 81000, 90001, 90002"},
        {{"get", "90001", "Gain", "--", "-x"}, 3, "camera 90001: property '-x': cannot be read"},
        {{"get", "90001", "iwdth"},
         3,
         "property 'iwdth': cannot be read: Property is not supported. Did you mean 'Width'?"},
        {{"set", "90001", "Width=8", "Gain"}, 3, "property 'Width=8': cannot be set to 'Gain'"},
        {{"set", "90001", "Width=8", "Gain", "1"}, 2, "set: takes NAME=VALUE, repeatable"},
        {{"get", "90001", "[a,b]"}, 3, "camera 90001: property '[a,b]': cannot be read: Property is not supported."},
        {{"perform", "90001", "Fly"}, 3, "camera 90001: function 'Fly': cannot be performed: Function not supported."},
    };
    for (const CommandCase& expected : cases) {
        SCOPED_TRACE(::testing::PrintToString(expected.words));
        const ChildResult result = run(expected.words);
        EXPECT_EQ(result.exitCode, expected.exitCode) << result.errors;
        const bool done = expected.exitCode == 0;
        EXPECT_THAT(done ? result.output : result.errors, HasSubstr(expected.said));
        EXPECT_EQ(done ? result.errors : result.output, "");
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), done ? 0 : 1);
        EXPECT_TRUE(done || result.errors.rfind("quill: ", 0) == 0) << result.errors;
        EXPECT_THAT(result.output + result.errors, Not(HasSubstr("\033")));
    }
}

TEST_F(Tool, GivesJsonWithStableKeys) {
    const struct {
        Words words;
        const char* pointer;
        json value;
    } cases[] = {
        {{"list"},
         "/cameras/0",
         {{"serialNumber", "81000"}, {"modelName", "Three"}, {"state", "disconnected"}, {"kind", "simulated"}}},
        {{"list"}, "/failures", json::array()},
        {{"info", "90001"}, "/information/Model Name", "One"},
        {{"properties", "90001"}, "/properties/2/choices", {"Global", "Rolling"}},
        {{"describe", "90001", "Width"}, "/properties/0/increment", "8"},
        {{"describe", "90001", "Width"}, "/properties/0/category", "Image Format Control"},
        {{"get", "90001", "Gain"}, "/properties/0/value", "1.5"},
        {{"set", "90001", "Gain", "3"}, "/properties/0/value", "3"},
        {{"functions", "90001"}, "/functions/0/parameters/1/label", "Length"},
        {{"perform", "90001", "Read Flash", "0", "2"},
         "/results/0",
         {{"label", "Data"}, {"type", "String"}, {"text", nullptr}, {"hex", "ffff"}}},
        {{"conform", "90001"}, "/conforms", true},
        {{"conform", "90001"}, "/answers/0/call", "initialiseWorkspace"},
        {{"conversions"}, "/conversions/0", {{"from", "MONO"}, {"to", "RGB"}, {"name", "MONO_TO_RGB"}}},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(::testing::PrintToString(expected.words));
        Words words = expected.words;
        words.emplace_back("--json");
        const json document = json::parse(run(words).output);
        EXPECT_EQ(document.at(json::json_pointer(expected.pointer)), expected.value) << document;
    }
}

TEST_F(Tool, ShellKeepsSettingsAndContinuesAfterAFailure) {
    const ChildResult result = runScript("# a comment\n"
                                         "perform 90001 \"Write Flash\" 0x10 hex:00FF41 # bytes\n"
                                         "get 90001 'No such'\n"
                                         "frobnicate\n"
                                         "get 90001 \"Gain\n"
                                         "perform 90001 Read\\ Flash 16 4\n"
                                         "exit\n"
                                         "get 90001 Gain\n");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "Data: 4 bytes\n"
                             "00000000  00 ff 41 ff                                      |..A.|\n");
    EXPECT_THAT(result.errors, HasSubstr("quill: line 3: camera 90001: property 'No such': cannot be read"));
    EXPECT_THAT(result.errors, HasSubstr("quill: line 5: the quote \" is not closed"));
}

TEST_F(Tool, WatchPrintsWhoDepartsAndArrivesUntilInterrupted) {
    const std::string cameras = readFile(m_Folder.file("list.json"));
    const auto useList = [&](const std::string& list) {
        return [this, list](pid_t) {
            std::filesystem::rename(m_Folder.write("next.json", list), m_Folder.file("list.json"));
        };
    };
    ChildProcess watch = command({"watch"});
    watch.reactions = {{"present   90002  Two\n", useList(R"({"Cameras": []})")},
                       {"departed  90002  Two\n", useList(cameras)},
                       {"arrived   90002  Two\n", [](pid_t process) { kill(process, SIGINT); }}};
    const ChildResult result = runChild(watch);
    EXPECT_EQ(result.exitCode, 130) << result.output;
    EXPECT_EQ(result.errors, "");
}

TEST_F(Tool, WatchEndsWhenNobodyListens) {
    EXPECT_EQ(runChild(shellCommand(R"({ "$0" watch; echo "ended with $?" >&2; } | head -n 1)")).errors,
              "ended with 0\n");
}

TEST_F(Tool, ColoursATerminalUnlessDisabled) {
    if (!canOpenTerminal()) {
        GTEST_SKIP() << "No pseudo-terminal can be opened here.";
    }
    ChildProcess list = command({"list"});
    list.onTerminal = true;
    list.environment.insert(list.environment.end(), {"TERM=xterm", "NO_COLOR="});
    EXPECT_THAT(runChild(list).output, HasSubstr("\033["));
    list.environment.back() = "NO_COLOR=1";
    EXPECT_THAT(runChild(list).output, Not(HasSubstr("\033[")));
}

TEST_F(Tool, TellsPeopleAloneHowTheNetworkIsSearched) {
    if (!canOpenTerminal()) {
        GTEST_SKIP() << "No pseudo-terminal can be opened here.";
    }
    ChildProcess unconfigured = shellCommand(R"(unset QUILL_GENICAM; "$0" list 2>&1)");
    EXPECT_THAT(runChild(unconfigured).output, Not(HasSubstr("--genicam")));
    unconfigured.onTerminal = true;
    EXPECT_THAT(runChild(unconfigured).output, HasSubstr("'quill list --genicam eth1'"));
    ChildProcess configured = shellCommand(R"(QUILL_GENICAM=nosuchcard "$0" list 2>&1)");
    configured.onTerminal = true;
    EXPECT_THAT(runChild(configured).output, Not(HasSubstr("--genicam")));
}

TEST_F(Tool, SaysThatTheCameraListIsBroken) {
    m_Folder.write("list.json", "{ \"Cameras\": [");
    const ChildResult list = run({"list"});
    EXPECT_EQ(list.exitCode, 1);
    EXPECT_THAT(list.errors, HasSubstr("quill: warning: simulated cameras (" + m_Folder.file("list.json")));
    EXPECT_THAT(list.errors, HasSubstr("cannot be enumerated: parse error"));
    const ChildResult info = run({"info", "90001"});
    EXPECT_EQ(info.exitCode, 3);
    EXPECT_THAT(info.errors, HasSubstr("camera '90001': not found; there is none; simulated cameras"));
}

TEST_F(Tool, ReportsResultsThatCannotBeWritten) {
    const ChildResult result = runChild(shellCommand(R"("$0" conversions > /dev/full)"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "quill: standard output: cannot be written: No space left on device\n");
}

TEST_F(Tool, CapturesAPlaceholderOfASimulatedCamera) {
    const std::string captured = m_Folder.file("captured.ppm");
    EXPECT_THAT(run({"capture", "90001", "--format", "BGR", "-o", captured}).errors,
                HasSubstr("a placeholder of one black pixel"));
    EXPECT_EQ(readFile(captured), std::string("P6\n1 1\n255\n\0\0\0", 14));
}

TEST_F(Tool, SaysHowACameraOfTheSdkFares) {
    const std::string image = m_Folder.file("frame.pgm");
    const struct {
        const char* device;
        Words words;
        int exitCode;
        Words said;
    } cases[] = {
        {"gige",
         {"info", "41500105"},
         0,
         {"Camera MAC Address  00:A:1B:3:4:F5\n", "Camera IP Address   192.168.1.20\n",
          "Camera Subnet Mask  255.255.255.0\n", "Camera Gateway      192.168.1.1\n",
          "Host MAC Address    00:1B:21:3C:9D:F8\n", "Host IP Address     192.168.1.2\n", "\nActual frame drop: 0\n",
          "Xact Errors: 0\n"}},
        {"uncounted",
         {"info", "41500105"},
         1,
         {"Host MAC Address    00:1B:21:3C:9D:F8\n",
          "camera 41500105: its network cannot be described in full: camera error #48, could not get GigE statistics"}},
        {"gige", {"info", "41500105", "--json"}, 0, {R"("gateway": "192.168.1.1")", R"(Resend Failure: 0\n)"}},
        {"silent",
         {"capture", "41500102", "-o", image, "--set", "Timeout=50"},
         4,
         {"camera 41500102: no image can be captured: ", "No frame arrived in time.\n"}},
        {"silent",
         {"capture", "41500102", "-o", image, "--set", "X Offset=8"},
         1,
         {"Unable to start stream. 'X Offset' 8 and 'Width' 64 reach beyond the sensor, which ends at 64\n"}},
        {"leaving",
         {"capture", "41500102", "-o", image, "--count", "1000"},
         5,
         {"camera 41500102: ", "The camera is gone."}},
        {"dark", {"capture", "41500102", "-o", image}, 130, {}},
        {"worn",
         {"conform", "41500102"},
         1,
         {"quill: camera 41500102: 5 of its answers are not as documented\n"}}, // while it is open
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(::testing::PrintToString(expected.words));
        const ChildResult result = runChild(command(expected.words, expected.device));
        EXPECT_EQ(result.exitCode, expected.exitCode) << result.errors;
        for (const std::string& part : expected.said) {
            EXPECT_THAT(expected.exitCode == 0 ? result.output : result.output + result.errors, HasSubstr(part));
        }
    }
}

TEST_F(Tool, WritesTheColourThatACameraComputed) {
    const struct {
        Words words;
        std::string said;
        std::string pixel; // of the scene
    } cases[] = {
        {{"Pixel Format=24"}, "8 x 8 BGR, 8 bits\n", "\xFA\x96\x32"},
        {{"Pixel Format=32", "--format", "RGB"}, "8 x 8 RGB, 8 bits\n", "\xFA\x96\x32"},
        {{"Pixel Format=48"}, "8 x 8 BGR, 16 bits\n", {"\x0F\xAF\x09\x69\x03\x23", 6}},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.said);
        const std::string image = m_Folder.file("frame.ppm");
        Words words{"capture", "41500101",          "-o",   image, "--set", "Width=8", "--set", "Height=8",
                    "--set",   "Video Exposure=10", "--set"};
        words.insert(words.end(), expected.words.begin(), expected.words.end());
        const ChildResult result = runChild(command(words, "orange"));
        EXPECT_THAT(result.output, ::testing::EndsWith(expected.said)) << result.errors;
        EXPECT_THAT(readFile(image), ::testing::EndsWith(expected.pixel));
    }
    EXPECT_THAT(runScript("set 41500101 'Pixel Format' 48\ninfo 41500101\n", command({"shell"}, "orange")).output,
                HasSubstr("Image               BGR, 16 bits\n"));
}

TEST_F(Tool, WritesPicturesAndSeriesToFilesAndPipes) {
    const struct {
        std::string command; // after the one that captures, which takes 8 x 8 pixels
        std::string output;
        std::string errors;
    } cases[] = {
        {"-o n.pgm --count 10 | sed -n '1p;10p'",
         "n-01.pgm: 8 x 8 BAYER_RGGB, 8 bits\nn-10.pgm: 8 x 8 BAYER_RGGB, 8 bits\n", ""},
        {"-o s.tif --count 11; tiffinfo s.tif | grep -c 'Width: 8 '",
         "s.tif: 11 images of 8 x 8 BAYER_RGGB, 8 bits\n11\n", ""},
        {"-o - --type pgm --count 3 | wc -c", "225\n", "quill: standard output: 8 x 8 BAYER_RGGB, 8 bits\n"},
        {"-o - --type tif --count 3 >t; tiffinfo t | grep -c 'Width: 8 '", "3\n",
         "quill: standard output: 3 images of 8 x 8 BAYER_RGGB, 8 bits\n"},
        {"-o - --type raw | \"$0\" convert - --from BAYER_RGGB --width 8 --height 8 --to RGB -o - --type TIFF | "
         "\"$0\" convert - -o x.png; \"$0\" convert - -o - --type pnm <x.png | \"$0\" convert - -o p.ppm",
         "x.png: 8 x 8 RGB, 8 bits\np.ppm: 8 x 8 RGB, 8 bits\n", "standard output: 8 x 8 RGB, 8 bits\n"},
        {"-o d --type dng; \"$0\" convert - -o d.raw <d",
         "d: 8 x 8 BAYER_RGGB, 8 bits\nd.raw: 8 x 8 BAYER_RGGB, 8 bits\n", ""},
        {"-o - --type pgm --count 100000 | head -c 3; echo", "P5\n\n",
         "quill: Cannot write standard output: Broken pipe\nended with 1\n"},
        {"-o - --type pgm >/dev/full", "",
         "quill: Cannot write standard output: No space left on device\nended with 1\n"},
        {"-o -", "", "quill: -o - needs --type, one of png, pgm, "},
        {"-o x.png --type jpg", "", "quill: Cannot write x.png: 'jpg' is not one of the types png, pgm, "},
        {"-o - --type pgm --json", "", "quill: --json excludes -o -: "},
        {"-o g.tif; echo convert - -o x.pgm | \"$0\" shell", "g.tif: 8 x 8 BAYER_RGGB, 8 bits\n",
         "line 1: standard input holds the commands of the shell"},
        {"-o y.tif; echo no image | \"$0\" convert - -o x.pgm", "y.tif: 8 x 8 BAYER_RGGB, 8 bits\n",
         "quill: Cannot read standard input: it is no PNG, PNM or TIFF file, and a raw frame needs"},
    };
    for (const auto& [text, output, errors] : cases) {
        SCOPED_TRACE(text);
        const ChildResult result =
            runChild(shellCommand("cd " + m_Folder.path().string() +
                                      "; take() { \"$0\" capture 41500101 --set Width=8 --set Height=8 --set "
                                      "'Video Exposure=10' \"$@\" || echo ended with $? >&2; }; take " +
                                      text,
                                  "orange"));
        EXPECT_EQ(result.output, output) << result.errors;
        EXPECT_THAT(result.errors, HasSubstr(errors));
    }
}

TEST_F(Tool, PrintsTheValueThatWasReallySet) {
    EXPECT_EQ(runChild(command({"set", "41500101", "Video Exposure", "12.3456789"}, "orange")).errors,
              "quill: warning: camera 41500101: property 'Video Exposure': was set to '12.3456789' and is now "
              "'12.345679'\n");
}

TEST_F(Tool, SavesComparesAndLoadsSettings) {
    const std::string file = m_Folder.file("settings.json");
    const ChildResult result =
        runScript("settings save 90001 '" + file + "'\nset 90001 Gain=3 Shutter=Rolling\n" +
                  "settings compare 90001 '" + file + "'\nsettings load 90001 '" + file +
                  "'\nsettings compare 90001 '" + file + "'\nsettings load 90002 '" + file + "'\n");
    EXPECT_EQ(result.output, "Gain = 3\nShutter = Rolling\n"
                             "NAME     FILE    CAMERA   REASON\n"
                             "Gain     1.5     3        -\n"
                             "Shutter  Global  Rolling  -\n"
                             "Shutter = Global\nGain = 1.5\n");
    EXPECT_EQ(result.errors, "quill: line 3: camera 90001: 2 of 3 settings differ\n"
                             "quill: line 6: camera 90002: the settings of a 'One' cannot be loaded: The settings are "
                             "those of another model.\n");
    const auto piped = [&](const std::string& text) { return runChild(shellCommand(text)); };
    EXPECT_THAT(piped(R"("$0" settings save 90001 - | "$0" settings load --force 90002 -)").errors,
                HasSubstr("camera 90002: 3 settings failed, 0 read back otherwise"));
    EXPECT_THAT(piped(R"(echo '{' | "$0" settings compare 90001 -)").errors,
                HasSubstr("quill: file '-': Settings cannot be read. parse error at line 2, column 1"));
}

TEST_F(Tool, PrintsRatesBelowOneFrameASecond) {
    const std::string output = runChild(command({"stream", "41500102", "--seconds", "3", "--json"}, "slow")).output;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const json rates = json::parse(line);
        EXPECT_LT(rates.at("deliveredPerSecond"), 20) << line; // 0.7, even if the lines are late
        EXPECT_EQ(rates.at("lost").at("Incomplete"), 0);
    }
    EXPECT_NE(output, "");
}

TEST_F(Tool, PipesFramesAndSaysWhatIsLost) {
    const ChildResult result = runChild(
        command({"stream", "41500101", "--set", "Width=64", "--set", "Height=48", "--raw", "-o", "-", "--frames", "20"},
                "orange"));
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output.size(), 20U * 64 * 48);
    EXPECT_THAT(result.errors, HasSubstr("-pixel_format bayer_rggb8 -video_size 64x48"));
    EXPECT_THAT(result.errors, HasSubstr("20 frames written; lost: "));
    const ChildResult few = runChild(command({"stream", "41500101", "--frames", "3", "--json"}, "orange"));
    EXPECT_THAT(few.output, HasSubstr("\"deliveredPerSecond\":")) << "a run of less than a second has a line, too";
    const ChildResult stalled = runChild(
        command({"stream", "41500101", "--still", "--set", "Hardware Trigger=Enabled", "--seconds", "2"}, "orange"));
    EXPECT_THAT(stalled.errors, HasSubstr("no frame for "));
}

} // namespace
