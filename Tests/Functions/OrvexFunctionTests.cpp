// SPDX-License-Identifier: Apache-2.0

#include <cstring>
#include <functional>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"
#include "Utilities/Xsvf.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using SoftwareDevices::Operation;
using TestSupport::expectFailure;
using TestSupport::thrownBy;
using Texts = std::vector<std::string>;

class OrvexFunctionTest : public TestSupport::OrvexPropertyFixture {
protected:
    OrvexFunctionTest() { connect(color()); }

    Texts perform(const std::string& name, Texts parameters) { return m_Camera->perform(name, parameters); }

    /// The boundary calls that a function makes: role names and numbers.
    std::string callsOf(const std::string& name, const Texts& parameters) {
        SoftwareDevices::startLog();
        perform(name, parameters);
        std::string text;
        for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
            text += call.name;
            for (const double number : call.numbers) {
                text += " " + std::to_string(static_cast<long long>(number));
            }
            text += "; ";
        }
        return text;
    }

    std::string flash(std::uint32_t address, std::uint32_t length) const {
        const auto bytes = SoftwareDevices::flash(m_Serial, address, length);
        return {bytes.begin(), bytes.end()};
    }
};

TEST_F(OrvexFunctionTest, EachFunctionMakesItsOneCallAndFailsWithIt) {
    const std::string zeros("a\0b\0", 4);
    const std::vector<std::pair<std::pair<std::string, Texts>, std::string>> rows{
        {{"Erase Flash", {"0x100", "010"}}, "sdkEraseFlash 256 8; "},
        {{"Erase Flash", {" 12abc", "0"}}, ""},
        {{"Read Flash", {"0X10", "16"}}, "sdkReadFlash 16 16; "},
        {{"Read Flash", {"-1", "0"}}, ""},
        {{"Write Flash", {"4194300", zeros}}, "sdkWriteFlash 4194300 4; "},
        {{"Write Flash", {"5", ""}}, "sdkWriteFlash 5 0; "},
        {{"Update Flash", {"+7", zeros, "ignored"}}, "sdkUpdateFlash 7 4; "},
        {{"Read Flash Status", {"3"}}, "sdkCommandRead 28 3 1; "},
        {{"Write Flash Status", {"3", zeros}}, "sdkCommandWrite 28 3 4; "},
        {{"Write Ram", {"0xFFFF0000", zeros}}, "sdkVendorRequest 160 65535 4294901760 4; "},
        {{"Jtag", {"corrupt"}}, callsOf("Jtag", {""})},
        {{"Reboot", {"Firmware"}}, "sdkCommandWrite 27 1 1; "},
    };
    for (const auto& [call, expected] : rows) {
        if (expected.find("; ") + 2 == expected.size()) { // "Jtag" goes on after a failure
            SoftwareDevices::failCall(1, 5);
            expectFailure<KestrelException_Function>(
                [&, name = call.first, data = call.second] { perform(name, data); }, "FunctionExecution",
                "Failed to execute function.");
        }
        EXPECT_EQ(callsOf(call.first, call.second), expected) << call.first;
    }
    connect(color());
    EXPECT_EQ(callsOf("Reboot", {"Bootloader"}), "sdkCommandWrite 27 0 1; ");
    connect(color());
    EXPECT_EQ(callsOf("Write Ram", {"0x12345678", ""}), "sdkVendorRequest 160 4660 305419896 0; ");
    EXPECT_EQ(SoftwareDevices::pluggedDevices().size(), 0U); // it has left to start the program
}

TEST_F(OrvexFunctionTest, BytesTravelWhole) {
    const std::string data("\0\x01\xFF\x80", 4);
    perform("Update Flash", {"0x1000", "pad"});
    perform("Update Flash", {"0x1000", data});
    EXPECT_EQ(flash(0x1000, 4), data);
    EXPECT_EQ(perform("Read Flash", {"0x1000", "4"}), Texts{data});
    EXPECT_EQ(perform("Read Flash", {"0x1000", "0"}), Texts{});
    perform("Write Flash", {"0x1000", std::string(4, '\x0F')}); // not erased: bits only clear
    EXPECT_EQ(flash(0x1000, 4), std::string("\0\x01\x0F\0", 4));
    EXPECT_EQ(perform("Erase Flash", {"0x1000", "3"}), Texts{});
    EXPECT_EQ(flash(0x1000, 4), std::string("\xFF\xFF\xFF\0", 4));
    perform("Write Flash Status", {"0", std::string(1, '\0')});
    EXPECT_EQ(perform("Read Flash Status", {"0"}), Texts{std::string(1, '\0')});
    perform("Write Ram", {"256", data});
    const auto ram = SoftwareDevices::ram(m_Serial, 256, 4);
    EXPECT_EQ(std::string(ram.begin(), ram.end()), data);
}

TEST_F(OrvexFunctionTest, RefusalsLeaveTheCameraUntouched) {
    const auto raised = [](const std::string& word, const std::string& className, const std::string& sentence) {
        return word + "[Shared/src/Functions/Orvex/" + className + ".cpp]" + sentence;
    };
    const auto empty = [&](const std::string& className) {
        return raised("ArgumentEmpty", className,
                      "The argument \"parameters\" is invalid. Provided argument is empty.");
    };
    const auto failed = [&](const std::string& className, const std::string& name) {
        return raised("FunctionExecution", className,
                      "Error with function {" + name + " }: Failed to execute function.");
    };
    const std::string signedRange = "stoi argument out of range";
    const std::string unsignedRange = "stoul argument out of range";
    const std::vector<std::pair<std::pair<std::string, Texts>, std::string>> rows{
        {{"Erase Flash", {}}, empty("OrvexEraseFlash")},
        {{"Read Flash", {"1"}}, empty("OrvexReadFlash")},
        {{"Write Flash", {"1"}}, empty("OrvexWriteFlash")},
        {{"Update Flash", {"1"}}, empty("OrvexUpdateFlash")},
        {{"Read Flash Status", {}}, empty("OrvexReadFlashStatus")},
        {{"Write Flash Status", {"1"}}, empty("OrvexWriteFlashStatus")},
        {{"Write Ram", {"1"}}, empty("OrvexWriteRam")},
        {{"Reboot", {}}, empty("OrvexReboot")},
        {{"Jtag", {}}, empty("OrvexJtag")},
        {{"Erase Flash", {"2147483648", "1"}}, signedRange},
        {{"Read Flash", {"0", "0x80000000"}}, signedRange},
        {{"Update Flash", {"2147483648", "x"}}, signedRange},
        {{"Read Flash Status", {"2147483648"}}, signedRange},
        {{"Write Flash", {"4294967296", "x"}}, unsignedRange},
        {{"Write Flash Status", {"4294967296", "x"}}, unsignedRange},
        {{"Write Ram", {"4294967296", "x"}}, unsignedRange},
        {{"Read Flash", {"x", "1"}}, "invalid stoi argument"},
        {{"Write Ram", {"", "x"}}, "invalid stoul argument"},
        {{"Reboot", {"firmware"}}, "Reboot mode not valid."},
        {{"Read Flash", {"0", "-1"}}, failed("OrvexReadFlash", "Read Flash")},
        {{"Read Flash", {"0", "2147483647"}}, failed("OrvexReadFlash", "Read Flash")},
        {{"Erase Flash", {"0", "-1"}}, failed("OrvexEraseFlash", "Erase Flash")},
    };
    SoftwareDevices::startLog();
    for (const auto& [call, expected] : rows) {
        EXPECT_EQ(thrownBy([&, name = call.first, parameters = call.second] { perform(name, parameters); }), expected)
            << call.first;
    }
    EXPECT_TRUE(SoftwareDevices::takeLog().empty());
}

/// A text that claims to have 2^32 bytes but has none.
class HugeText {
public:
    static constexpr auto kLength =
        static_cast<std::size_t>(std::uint64_t{1} << 32); ///< 0 where no text can be as long
    explicit HugeText(std::string& text) : m_Text(text) { setLength(kLength); }
    HugeText(const HugeText&) = delete;
    HugeText& operator=(const HugeText&) = delete;
    ~HugeText() { setLength(0); }

private:
    /// The length is stored after the pointer to the characters.
    void setLength(std::size_t length) {
        std::memcpy(reinterpret_cast<char*>(&m_Text) + sizeof(char*), &length, sizeof(length));
        EXPECT_EQ(m_Text.size(), length);
    }
    std::string& m_Text;
};

TEST_F(OrvexFunctionTest, DataOf33BitsOfLengthAreRefusedBeforeTheCameraIsTouched) {
    if (HugeText::kLength == 0) {
        GTEST_SKIP() << "Memory has 32 bits of addresses.";
    }
    SoftwareDevices::startLog();
    for (const char* name : {"Write Flash", "Update Flash", "Write Flash Status", "Write Ram"}) {
        Texts parameters{"0", ""};
        const HugeText huge(parameters[1]);
        expectFailure<KestrelException_Function>([&] { m_Camera->getFunction(name).perform(parameters); },
                                                 "FunctionExecution", "Failed to execute function.");
    }
    EXPECT_TRUE(SoftwareDevices::takeLog().empty());
}

TEST_F(OrvexFunctionTest, ADisconnectedCameraPerformsNothing) {
    m_Camera->disconnect();
    const auto expectRefused = [](const std::function<void()>& action) {
        expectFailure<KestrelException_Function>(action, "FunctionExecution", "Failed to execute function.");
    };
    expectRefused([&] { perform("Read Flash", {"0", "1"}); });
    Utilities::XsvfReport report;
    expectRefused([&] { Utilities::playXsvf(*m_Camera, {0}, report); });
}

/// "Jtag" and playXsvf() reach the device; access ends, whichever transfer fails.
TEST_F(OrvexFunctionTest, XsvfFilesProgramADevice) {
    const std::vector<unsigned char> file{0x02, 8,    SoftwareDevices::kJtagData, // select the data register,
                                          0x08, 0,    0,
                                          0,    32, // 32 bits long,
                                          0x03, 0x12, 0x34,
                                          0x56, 0x78, 0x00}; // shift them in, and end
    EXPECT_EQ(perform("Jtag", {{file.begin(), file.end()}}), Texts{});
    EXPECT_EQ(SoftwareDevices::jtagData(m_Serial), (std::vector<std::uint8_t>{0x78, 0x56, 0x34, 0x12}));
    const std::uint64_t before = SoftwareDevices::boundaryCalls();
    Utilities::XsvfReport report;
    EXPECT_TRUE(Utilities::playXsvf(*m_Camera, file, report));
    const std::uint64_t calls = SoftwareDevices::boundaryCalls() - before;
    for (std::uint64_t call = 1; call < calls; ++call) { // the last one closes
        SoftwareDevices::failCall(call, 5);
        EXPECT_FALSE(Utilities::playXsvf(*m_Camera, file, report));
        EXPECT_EQ(report.opened, call != 1);
        EXPECT_EQ(report.failedTransfers, 1U);
        EXPECT_FALSE(report.cameraGone);
        EXPECT_FALSE(SoftwareDevices::isJtagOpen(m_Serial));
    }
    SoftwareDevices::failCall(2, 5);
    EXPECT_TRUE(Utilities::playXsvf(m_Camera->getHandle(), file)); // nothing was compared
}

} // namespace
