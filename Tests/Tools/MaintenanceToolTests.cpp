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
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace TestSupport;

/// Two sections, 0x28 bytes with header and end.
const std::string kImage("CY\x1c\xb0"
                         "\x02\0\0\0\0\x30\0\x40"
                         "12345678"
                         "\x01\0\0\0\0\0\x01\x40"
                         "abcd"
                         "\0\0\0\0\0\x30\0\x40",
                         40);

/// The list has a camera with all flash functions, one whose flash can be erased but not written, one without
/// functions, and one that has what a camera in USB3 Vision mode has.
class MaintenanceTool : public ToolFixture {
protected:
    MaintenanceTool() : ToolFixture("FlashCameras.json") {
        std::filesystem::current_path(m_Folder.path()); // files are named as they are typed
        m_Folder.write("table.bin", "0123456789abcdef");
        m_Folder.write("image", kImage);
        m_Folder.write("cut", kImage.substr(0, kImage.size() - 1));
        m_Folder.write("empty", "");
    }
    ~MaintenanceTool() override { std::filesystem::current_path("/"); }

    /// The tool, with the devices in software.
    static ChildProcess withDevices(const Words& words) { return {QUILL_WITH_DEVICES, words, {}}; }

    /// Parses one object per line.
    static std::vector<json> parseLines(const std::string& text) {
        std::istringstream lines(text);
        std::vector<json> objects;
        for (std::string line; std::getline(lines, line);) {
            objects.push_back(json::parse(line));
        }
        return objects;
    }
};

TEST_F(MaintenanceTool, RefusesBeforeTheCameraIsTouched) {
    const struct {
        std::string words;
        int exitCode;
        const char* said;
    } cases[] = {
        {"flash write 70001 0 empty", 1, "file 'empty': is empty"},
        {"flash write 70001 0 missing", 1, "file 'missing': cannot be read: No such file"},
        {"flash write 70001 0 table.bin --maximum-size 15", 1, "file 'table.bin': has 16 bytes, more than 15"},
        {"flash write 70001 0xFFFFF1 table.bin", 2,
         "0xFFFFF1..0x1000001 cannot be erased: the flash ends at 0x1000000"},
        {"flash write 70001 0 table.bin --chunk 0", 2, "--chunk"},
        {"flash write 70001 -1 table.bin", 2, "ADDRESS"},
        {"flash write 70001 '' table.bin", 2, "ADDRESS"},
        {"flash erase 70001 '' 256", 2, "ADDRESS"},
        {"flash erase 70001 0 '16 '", 2, "LENGTH"},
        {"flash erase 70001 99999999999999999999 16", 2, "ADDRESS"},
        {"flash erase '' 0 256", 2, "SERIAL"},
        {"firmware write 70001 image --address ''", 2, "--address"},
        {"perform 70001 'Write Flash' '' x", 2, "Address takes a whole number"},
        {"flash write 70002 0 table.bin", 3, "cannot be written: function 'Write Flash': Function not supported."},
        {"flash erase 70001 0 0", 2, "LENGTH"},
        {"firmware write 70001 cut", 1, "file 'cut': is not a complete boot image: Invalid image file."},
        {"firmware load 80001 image", 3,
         "camera 80001: 'image' cannot be loaded into its RAM: Function not supported."},
        {"flash", 2, "flash: a command is missing; try 'quill flash --help'"},
        {"flash burn", 2, "unknown command 'flash burn'; try 'quill flash --help'"},
        {"reboot 80001", 3, "camera 80001: it cannot be restarted: Function not supported."},
        {"usb3vision on 80002", 1, "cannot be switched on: it is a simulated camera"},
        {"usb3vision on 70001", 3, "property 'USB3 Vision Mode': cannot be read: Property is not supported."},
    };
    for (const auto& refused : cases) {
        SCOPED_TRACE(refused.words);
        const ChildResult result =
            runScript("flash write 70001 0 image --quiet\nperform 70001 'Write Flash' 0100 hex:4f4b\n" + refused.words +
                      "\nflash compare 70001 0 image --quiet\nflash read 70001 099 4\n");
        EXPECT_EQ(result.exitCode, refused.exitCode);
        EXPECT_THAT(result.errors, HasSubstr(std::string("quill: line 3: ")));
        EXPECT_THAT(result.errors, HasSubstr(refused.said));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("00000063  ff 4f 4b ff"));
    }
}

TEST_F(MaintenanceTool, WritesComparesAndErases) {
    const ChildResult result = runScript("flash write 70001 0x1000 table.bin --chunk 8 --quiet\n"
                                         "flash read 70001 0x0FFF 18\n"
                                         "flash read 70001 0x1000 16 -o copy.bin --quiet\n"
                                         "perform 70001 'Write Flash' 0x1009 hex:00\n"
                                         "flash compare 70001 0x1000 table.bin --chunk 8 --quiet\n"
                                         "flash erase 70001 0x1000 15 --quiet\n"
                                         "flash read 70001 0x100E 2\n"
                                         "flash status 70001 7 --set 0x8C\n");
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(result.errors, "quill: line 5: camera 70001: 0x1000..0x1010 differs at 0x1009: 0x00 instead of 0x39\n");
    EXPECT_EQ(result.output, "00000fff  ff 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65  |.0123456789abcde|\n"
                             "0000100f  66 ff                                            |f.|\n"
                             "0000100e  ff 66                                            |.f|\n"
                             "0x8C\n");
    EXPECT_EQ(readFile(m_Folder.file("copy.bin")), "0123456789abcdef");
}

TEST_F(MaintenanceTool, DryRunTouchesNothing) {
    for (const char* words :
         {"flash write 70001 0 table.bin", "flash erase 70001 0 16", "firmware write 70001 image"}) {
        SCOPED_TRACE(words);
        const ChildResult result = runScript("perform 70001 'Write Flash' 0 hex:4f4b\n" + std::string(words) +
                                             " --dry-run\nflash read 70001 0 3\n");
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("camera 70001: 0x0..0x"));
        EXPECT_THAT(result.output, HasSubstr(" would be verified\n"));
        EXPECT_THAT(result.output, HasSubstr("00000000  4f 4b ff "));
        EXPECT_EQ(result.errors, "");
    }
}

TEST_F(MaintenanceTool, WritesFirmwareAndReportsItAsJson) {
    const ChildResult check = run({"firmware", "check", "image", "--json"});
    EXPECT_EQ(json::parse(check.output), json({{"size", 40},
                                               {"imageSize", 40},
                                               {"entryAddress", 0x40003000},
                                               {"sections",
                                                {{{"offset", 12}, {"loadAddress", 0x40003000}, {"length", 8}},
                                                 {{"offset", 28}, {"loadAddress", 0x40010000}, {"length", 4}}}}}))
        << check.errors;

    const ChildResult written = runScript("firmware write 70001 image --address 0x40 --chunk 18 --json\n"
                                          "flash compare 70001 0x40 image --quiet\n");
    EXPECT_EQ(written.exitCode, 0);
    EXPECT_EQ(written.errors, "");
    const json expected{{{"stage", "erase"}, {"done", 0.0}},
                        {{"stage", "write"}, {"done", 0.55}},
                        {{"stage", "write"}, {"done", 1.0}},
                        {{"stage", "verify"}, {"done", 0.0}},
                        {{"stage", "verify"}, {"done", 0.45}},
                        {{"stage", "verify"}, {"done", 0.9}},
                        {{"stage", "verify"}, {"done", 1.0}},
                        {{"result", "verified"}, {"camera", "70001"}, {"address", 0x40}, {"length", 40}}};
    EXPECT_EQ(json(parseLines(written.output)), expected);
}

/// 16 MiB in chunks of one byte take seconds, but finish even without the interruption.
TEST_F(MaintenanceTool, EndsCleanlyWhenInterrupted) {
    m_Folder.write("large", kImage + std::string((16U << 20) - kImage.size(), 'x'));
    ChildProcess write = withDevices({"firmware", "write", "41500101", "large", "--json", "--chunk", "1"});
    write.reactions = {{"\"write\"", [](pid_t process) { kill(process, SIGINT); }}};
    const ChildResult result = runChild(write);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.errors, StartsWith("quill: camera 41500101: interrupted while writing at 0x"));
    EXPECT_THAT(result.errors, EndsWith(" of 0x0..0x1000000: the flash there is partly written; the image's header was "
                                        "not written, so the camera does not start it\n"));
    const json last = parseLines(result.output).back();
    EXPECT_EQ(last.at("result"), "interrupted");
    EXPECT_EQ(last.at("stage"), "write");
}

TEST_F(MaintenanceTool, NamesStageAddressAndStateOfWhatEndsAWriting) {
    const Words flash{"flash", "write", "41500101", "0x100", "image", "--chunk", "18", "--quiet"};
    const Words firmware{"firmware", "write", "41500101", "image", "--address", "0x100", "--chunk", "18", "--quiet"};
    const std::string partly = "the flash there is partly written";
    const std::string headless = partly + "; the image's header was not written, so the camera does not start it";
    const std::string unknown = "the flash there is written, except possibly the image's header";
    const std::string changed = "the flash there is changed as requested, but only partly verified";
    const struct {
        Words write;
        const char* device;
        std::string place;
        std::string state;
    } cases[] = {
        {flash, "pulled at erase 1", "erased at 0x100", "the flash there may be partly erased"},
        {flash, "pulled at write 1", "written at 0x100", partly},
        {flash, "pulled at write 3", "written at 0x124", partly},
        {flash, "pulled at read 2", "verified at 0x112", changed},
        {firmware, "pulled at write 1", "written at 0x104", headless},
        {firmware, "pulled at write 3", "written at 0x100", unknown},
        {flash, "interrupted at erase 1", "writing at 0x112", partly},
        {flash, "interrupted at write 3", "verifying at 0x100", changed},
        {firmware, "interrupted at write 2", "writing at 0x100", headless},
    };
    for (const auto& [write, device, place, state] : cases) {
        SCOPED_TRACE(write[0] + " " + device);
        const bool interrupted = device[0] == 'i';
        const ChildResult result = runChild(command(write, device));
        EXPECT_EQ(result.exitCode, interrupted ? 130 : 5);
        EXPECT_EQ(result.errors, "quill: camera 41500101: " +
                                     (interrupted ? "interrupted while " + place + " of 0x100..0x128: " + state
                                                  : "0x100..0x128 cannot be " + place +
                                                        ": Failed to execute function. The camera is gone; " + state) +
                                     "\n");
    }
}

TEST_F(MaintenanceTool, FindsTheFirstByteThatDiffersFromWhatWasWritten) {
    for (const char* write : {"flash write 41500101 0x100 image", "firmware write 41500101 image --address 0x100"}) {
        const ChildResult result =
            runScript("perform 41500101 'Write Flash' 0x10D hex:00\n" + std::string(write) + " --chunk 18 --quiet\n",
                      command({"shell"}, "unerasable"));
        EXPECT_EQ(result.exitCode, 6);
        EXPECT_EQ(result.errors,
                  "quill: line 2: camera 41500101: 0x100..0x128 differs at 0x10D: 0x00 instead of 0x32\n");
    }
}

TEST_F(MaintenanceTool, GoesOnWhenNobodyReadsItsProgress) {
    const ChildResult result = runChild(
        shellCommand(R"({ "$0" flash write 70001 0 table.bin --json --chunk 1; echo "ended with $?" >&2; } | true)"));
    EXPECT_EQ(result.errors, "ended with 0\n");
}

TEST_F(MaintenanceTool, DrawsABarOnATerminal) {
    if (!canOpenTerminal()) {
        GTEST_SKIP() << "No pseudo-terminal can be opened here.";
    }
    ChildProcess write = shellCommand(R"("$0" flash write 70001 0 table.bin 2>&1)");
    write.onTerminal = true;
    const std::string output = runChild(write).output;
    EXPECT_THAT(output, HasSubstr("\rquill: camera 70001: erase   [--------------------]   0 %"));
    EXPECT_THAT(output, HasSubstr("\rquill: camera 70001: verify  [####################] 100 %"));
    EXPECT_THAT(output, EndsWith("camera 70001: 0x0..0x10 verified\r\n"));
}

TEST_F(MaintenanceTool, PlaysXsvfAndSaysWhatFailed) {
    const std::string setup("\x08\0\0\0\x20"        // shifts of 32 bits
                            "\x01\xff\xff\xff\xff"  // all of them compared
                            "\x12\x01\x09\0\0\0\0", // shift in zeros and compare
                            17);
    m_Folder.write("good.xsvf", setup + std::string("\x14\x95\x11\xc3\0", 5));
    m_Folder.write("other.xsvf", setup + std::string("\x14\x95\x11\xc4\0", 5));
    m_Folder.write("cut.xsvf", setup);
    m_Folder.write("bad.xsvf", setup + "\x14\x95\x11\xc3\x05");
    const struct {
        Words words;
        int exitCode;
        const char* said;
    } cases[] = {
        {{"good.xsvf"}, 0, "camera 41500101: played 'good.xsvf', 5 commands\n"},
        {{"good.xsvf", "--dry-run"}, 0, "5 commands of 'good.xsvf' would be played"},
        {{"other.xsvf", "--quiet"},
         1,
         "quill: camera 41500101: 'other.xsvf' cannot be played into its JTAG port: the device returned "
         "unexpected bits, at command 4, file offset 0xC: expected 149511c4, captured 149511c3, mask ffffffff\n"},
        {{"cut.xsvf"},
         1,
         "quill: file 'cut.xsvf': cannot be played: it ends without the command that completes it, at command 4, file "
         "offset 0xC"},
        {{"bad.xsvf"}, 1, "cannot be played: an illegal command, at command 5, file offset 0x15"},
    };
    for (const auto& play : cases) {
        SCOPED_TRACE(play.said);
        Words words{"jtag", "41500101"};
        words.insert(words.end(), play.words.begin(), play.words.end());
        const ChildResult result = runChild(withDevices(words));
        EXPECT_EQ(result.exitCode, play.exitCode);
        EXPECT_THAT(result.output + result.errors, HasSubstr(play.said));
    }
    const ChildResult gone = runChild(command({"jtag", "41500101", "good.xsvf", "--json"}, "pulled"));
    EXPECT_EQ(gone.exitCode, 5);
    EXPECT_THAT(gone.errors, EndsWith("transfers failed: 2, the first one at command 4, file offset 0xC; the camera is "
                                      "gone\n"));
    EXPECT_EQ(parseLines(gone.output).back().at("cameraGone"), true);
    for (const Words& words : {Words{"jtag", "70001", "good.xsvf"}, {"jtag", "70001", "good.xsvf", "--dry-run"}}) {
        const ChildResult refused = run(words);
        EXPECT_EQ(refused.exitCode, 3);
        EXPECT_THAT(refused.errors, HasSubstr("JTAG port: only that of an SDK camera can be reached"));
    }
}

TEST_F(MaintenanceTool, CamerasReturnInTheSelectedMode) {
    const ChildResult result = runScript("firmware load 41500101 image\n"
                                         "usb3vision on 41500103\n"
                                         "usb3vision on 41500101 --reboot\n"
                                         "usb3vision status 41500101\n"
                                         "flash read 41500101 0 4\n"
                                         "usb3vision off 41500101 --reboot\n"
                                         "usb3vision status 41500101\n"
                                         "usb3vision on 41500101\n"
                                         "perform 41500101 'Update Flash' 0x1B8000 hex:ffff\n"
                                         "usb3vision on 41500101\n",
                                         withDevices({"shell"}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(
        result.errors,
        "quill: line 1: camera 41500101: load 0 %\n"
        "quill: line 1: camera 41500101: load 50 %\n"
        "quill: line 1: camera 41500101: load 80 %\n"
        "quill: line 1: camera 41500101: load 100 %\n"
        "quill: line 1: camera 41500101: 'image' is loaded and started\n"
        "quill: line 1: camera 41500101: left the list\n"
        "quill: line 1: camera 41500101: is back as an SDK camera\n"
        "quill: line 2: camera 41500103: USB3 Vision Mode cannot be switched on: its flash holds no valid USB3 Vision "
        "file\n"
        "quill: line 3: camera 41500101: left the list\n"
        "quill: line 3: camera 41500101: is back as a USB3 Vision camera\n"
        "quill: line 5: camera 41500101: 0x0..0x4 cannot be read: function 'Read Flash': Function not supported.\n"
        "quill: line 6: camera 41500101: left the list\n"
        "quill: line 6: camera 41500101: is back as an SDK camera\n"
        "quill: line 8: camera 41500101: the mode takes effect at the next restart\n"
        "quill: line 10: camera 41500101: USB3 Vision Mode cannot be switched on: its flash holds no valid USB3 Vision "
        "file\n");
    EXPECT_EQ(result.output, "USB3 Vision Mode = Enabled\n"
                             "MODE     WRITABILITY  AT PRESENT\n"
                             "Enabled  writable     a USB3 Vision camera\n"
                             "USB3 Vision Mode = Disabled\n"
                             "MODE      WRITABILITY  AT PRESENT\n"
                             "Disabled  writable     an SDK camera\n"
                             "USB3 Vision Mode = Enabled\n");
    EXPECT_THAT(run({"usb3vision", "status", "80002"}).output, HasSubstr("a simulated camera"));
}

TEST_F(MaintenanceTool, DistinguishesAVainWaitFromACameraThatStays) {
    EXPECT_EQ(run({"reboot", "70001", "--timeout", "1"}).errors,
              "quill: camera 70001: responds, and did not leave the list\n");
    const ChildResult gone = runChild(withDevices({"reboot", "41500101", "--timeout", "3"}));
    EXPECT_EQ(gone.exitCode, 4);
    EXPECT_THAT(gone.errors, EndsWith("left the list and did not come back within 3 s\n"));
}

TEST_F(MaintenanceTool, PrintsTheDriverKitsVersionOrTheReason) {
    const std::string key =
        "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}\\";
    const std::string name = key + "DisplayVersion=";
    const struct {
        std::string record;
        int exitCode;
        std::string said;
    } cases[] = {
        {"", 3, "quill: driver kit: is not installed\n"},
        {name + "4.5.1.0", 0, "4.5.1.0\n"},
        {name + "4\x1b[31m.\x7f\xc2\x9b"
                "5",
         0, "4 [31m. 5\n"},
        {key + "=", 1, "quill: driver kit: its version cannot be read: its record names no version\n"},
        {name + "dword:4", 1,
         "quill: driver kit: its version cannot be read: its record holds a version that is not a text\n"},
        {name + "\xff", 1, "quill: driver kit: its version cannot be read: it is not UTF-8\n"},
    };
    ChildProcess kit = command({"kit"});
    kit.environment.push_back("QUILL_TEST_DRIVERS=" + m_Folder.file("drivers.conf"));
    for (const auto& expected : cases) {
        m_Folder.write("drivers.conf", expected.record);
        const ChildResult result = runChild(kit);
        EXPECT_EQ(result.exitCode, expected.exitCode);
        EXPECT_EQ(result.output + result.errors, expected.said);
    }
    m_Folder.write("drivers.conf", name + "4\x1b\x7f\xc2\x9b"
                                          "5");
    kit.arguments.emplace_back("--json");
    EXPECT_EQ(runChild(kit).output, "{\n  \"version\": \"4\\u001b\\u007f\\u009b5\"\n}\n");
    kit.environment.back() = "QUILL_TEST_DRIVERS=" + m_Folder.path().string();
    const ChildResult unreadable = runChild(kit);
    EXPECT_EQ(unreadable.exitCode, 1);
    EXPECT_EQ(unreadable.errors,
              "quill: driver kit: its record cannot be read, so whether it is installed is unknown (status 5)\n");
}

} // namespace
