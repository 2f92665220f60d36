#include <gtest/gtest.h>

#include "Support/OrvexPropertyFixture.h"
#include "Utilities/Programmer.h"
#include "Utilities/Xsvf.h"

namespace {

using SoftwareDevices::JtagClocks;
using SoftwareDevices::Operation;
using SoftwareDevices::TapState;
using Utilities::XsvfError;
using Bytes = std::vector<unsigned char>;

void append(Bytes& file, std::initializer_list<int> bytes) {
    for (const int byte : bytes) {
        file.push_back(static_cast<unsigned char>(byte));
    }
}

/// Selects an instruction, and with it the register of the following data shifts.
void appendInstruction(Bytes& file, int instruction) {
    append(file, {0x02, SoftwareDevices::kJtagInstructionBits, instruction});
}

/// Shifts 32 bits in, and compares those that come out, all or none of them.
void appendData(Bytes& file, std::uint32_t tdi, std::uint32_t tdo, bool compare) {
    const int mask = compare ? 0xFF : 0x00;
    append(file, {0x08, 0, 0, 0, 32, 0x01, mask, mask, mask, mask, 0x09});
    for (const std::uint32_t word : {tdi, tdo}) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            file.push_back(static_cast<unsigned char>(word >> shift));
        }
    }
}

class OrvexJtagTest : public TestSupport::OrvexPropertyFixture {
protected:
    OrvexJtagTest() { connect(color()); }

    void plugAgain() {
        SoftwareDevices::replug(m_Serial);
        m_Camera->disconnect();
        m_Camera->connect();
    }
    Utilities::XsvfReport play(const Bytes& file) {
        Utilities::XsvfReport report;
        Utilities::playXsvf(*m_Camera, file, report);
        EXPECT_FALSE(SoftwareDevices::isJtagOpen(m_Serial));
        return report;
    }
};

TEST_F(OrvexJtagTest, AFileIdentifiesAndProgramsADevice) {
    Bytes file;
    append(file, {0x12, 0x00}); // reset selects the identification
    appendData(file, 0, color().jtagIdCode, true);
    appendInstruction(file, SoftwareDevices::kJtagData);
    appendData(file, 0xDEADBEEF, 0, false);
    appendData(file, 0x12345678, 0xDEADBEEF, true);
    appendInstruction(file, SoftwareDevices::kJtagBypass);
    appendData(file, 0x80000001, 0x00000002, true); // one bit later
    append(file, {0x00});
    EXPECT_TRUE(play(file).succeeded());
    EXPECT_EQ(SoftwareDevices::jtagData(m_Serial), (std::vector<std::uint8_t>{0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(SoftwareDevices::tapState(m_Serial), TapState::RunTestIdle);
    file[file.size() - 2] = 0x03; // another expected bit
    const Utilities::XsvfReport report = play(file);
    EXPECT_EQ(report.error, XsvfError::TdoMismatch);
    EXPECT_EQ(report.capturedTdo, (Bytes{0, 0, 0, 2}));
    // The function plays the same, and tells nothing.
    EXPECT_NO_THROW(Utilities::Programmer::jtagXsvf(*m_Camera, file));
}

TEST_F(OrvexJtagTest, ThePinsSeeTheFile) {
    Bytes file;
    append(file, {0x04, 0, 0, 0x02, 0x58}); // 600 microseconds after each shift
    appendInstruction(file, 0xA5);
    append(file, {0x00});
    SoftwareDevices::startJtagLog(m_Serial);
    EXPECT_TRUE(play(file).succeeded());
    std::string shifted;
    std::uint64_t idle = 0;
    for (const JtagClocks& clocks : SoftwareDevices::takeJtagLog(m_Serial)) {
        if (clocks.state == TapState::ShiftIr) {
            shifted.append(clocks.clocks, clocks.tdi ? '1' : '0');
        }
        idle += clocks.state == TapState::RunTestIdle && !clocks.tms ? clocks.clocks : 0;
    }
    EXPECT_EQ(shifted, "10100101");
    EXPECT_EQ(idle, 600U);
}

TEST_F(OrvexJtagTest, AccessEndsWhateverFails) {
    Bytes file;
    for (int piece = 0; piece < 4; ++piece) {
        appendInstruction(file, SoftwareDevices::kJtagData);
        appendData(file, 0x01010101, 0, false);
    }
    append(file, {0x00});
    const std::uint64_t before = SoftwareDevices::boundaryCalls();
    EXPECT_TRUE(play(file).succeeded());
    const std::uint64_t calls = SoftwareDevices::boundaryCalls() - before;
    for (std::uint64_t call = 1; call < calls; ++call) { // the last one closes
        SoftwareDevices::failCall(call, 5);
        const Utilities::XsvfReport report = play(file);
        EXPECT_EQ(report.opened, call != 1);
        EXPECT_EQ(report.failedTransfers, 1U);
        EXPECT_FALSE(report.succeeded() || report.cameraGone);
    }
    SoftwareDevices::unplugDuring(m_Serial, Operation::sdkRegisterWrite, 40);
    EXPECT_TRUE(Utilities::playXsvf(m_Camera->getHandle(), file)); // nothing was compared
    plugAgain();
    Bytes wait = file;
    wait.pop_back();
    append(wait, {0x17, 0x01, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}); // 16 million words
    SoftwareDevices::unplugDuring(m_Serial, Operation::sdkRegisterWrite, calls + 10);
    const std::uint64_t start = SoftwareDevices::boundaryCalls();
    Utilities::XsvfReport report;
    EXPECT_FALSE(Utilities::playXsvf(*m_Camera, wait, report));
    EXPECT_TRUE(report.cameraGone);
    EXPECT_EQ(report.failedOffset, file.size() - 1);
    EXPECT_LT(SoftwareDevices::boundaryCalls() - start, calls + 100);
    plugAgain();
    EXPECT_TRUE(play(file).succeeded());
}

} // namespace
