// SPDX-License-Identifier: Apache-2.0

#include "Support/FlatDeviceFixture.h"

#include <iterator>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace {

using namespace SoftwareDevices;
using namespace TestSupport;

constexpr std::uint8_t kControl = 0x19;
constexpr std::uint8_t kShift = 0x1A;
constexpr std::uint32_t kLeave = 0x8000;
constexpr std::uint32_t kNoTdo = 0x4000;

struct JtagDevice : FlatDeviceFixture {
    JtagDevice() {
        DeviceDescription device = smallDevice(ColorFormat::MONO);
        device.jtagDataBits = 20;
        open(device);
        EXPECT_TRUE(control(0x501) && control(0x101));
    }

    bool control(std::uint32_t word) { return sdkRegisterWrite(handle, kControl, word, 0, nullptr) != 0; }
    void walk(std::initializer_list<bool> tms) {
        for (const bool level : tms) {
            EXPECT_TRUE(control(0x400u + level));
        }
    }
    void toShiftDr() { walk({1, 0, 0}); } // from run-test/idle
    void toIdle() { walk({1, 0}); }       // from exit 1

    bool shift(std::uint32_t transfer, const Bytes& bytes) {
        return sdkRegisterWrite(handle, kShift, transfer, static_cast<std::uint32_t>(bytes.size()), bytes.data()) != 0;
    }
    Bytes exchange(std::uint32_t transfer, const Bytes& bytes) {
        Bytes captured(bytes.size());
        EXPECT_TRUE(shift(transfer, bytes));
        EXPECT_TRUE(sdkRegisterRead(handle, kShift, transfer & 0xFFF, static_cast<std::uint32_t>(captured.size()),
                                    captured.data()));
        return captured;
    }
    /// From run-test/idle and back.
    Bytes select(std::uint8_t instruction) {
        walk({1, 1, 0, 0});
        const Bytes captured = exchange(8 | kLeave, {instruction});
        toIdle();
        return captured;
    }
};

/// Where TMS 0 and TMS 1 lead from each state (IEEE 1149.1), in hexadecimal.
constexpr const char* kNext[] = {"10", "12", "39", "45", "45", "68", "67", "48",
                                 "12", "A0", "BC", "BC", "DF", "DE", "BF", "12"};

TEST_F(JtagDevice, TheTapWalksItsSixteenStates) {
    std::mt19937 random(1);
    std::set<std::pair<int, bool>> steps;
    for (int state = 0; steps.size() < 2 * std::size(kNext);) {
        const bool tms = random() % 2 != 0;
        steps.emplace(state, tms);
        state = std::stoi(std::string(1, kNext[state][tms ? 1 : 0]), nullptr, 16);
        walk({tms});
        ASSERT_EQ(static_cast<int>(tapState(kSerial)), state) << "step " << steps.size();
    }
}

// A pulse with TMS high, then edges at that level: five clocks are enough in any state, four are not.
TEST_F(JtagDevice, FiveEdgesWithTmsHighReset) {
    walk({0});
    toShiftDr();
    walk({1});
    for (int edges = 1; edges < 5; ++edges) {
        EXPECT_NE(tapState(kSerial), TapState::TestLogicReset);
        EXPECT_TRUE(control(0) && control(1) && control(1)) << "a line that is high has no rising edge";
    }
    EXPECT_EQ(tapState(kSerial), TapState::TestLogicReset);
}

TEST_F(JtagDevice, UnknownInstructionsSelectTheBitOfBypass) {
    walk({0});
    EXPECT_EQ(select(0x5A)[0] & 3, 1) << "what an instruction register captures";
    toShiftDr();
    EXPECT_EQ(exchange(12 | kLeave, {0xA5, 0x0F}), (Bytes{0x4A, 0x0F}));
}

TEST_F(JtagDevice, DataShiftedInPiecesAreUpdatedTogetherAndCapturedNext) {
    walk({0});
    select(kJtagData);
    toShiftDr();
    EXPECT_EQ(exchange(9, {0xC3, 0x01}), (Bytes{0, 0}));
    EXPECT_TRUE(shift(3 | kNoTdo, {0x05}));
    Bytes none(1);
    EXPECT_FALSE(sdkRegisterRead(handle, kShift, 3, 1, none.data())) << "no TDO was requested";
    EXPECT_EQ(tapState(kSerial), TapState::ShiftDr);
    EXPECT_EQ(exchange(8 | kLeave, {0x96}), Bytes{0});
    EXPECT_EQ(tapState(kSerial), TapState::Exit1Dr);
    EXPECT_EQ(jtagData(kSerial), (Bytes{0, 0, 0})) << "not updated yet";
    toIdle();
    const Bytes stored{0xC3, 0x6B, 0x09}; // 1 1100 0011, then 101, then 1001 0110
    EXPECT_EQ(jtagData(kSerial), stored);
    toShiftDr();
    EXPECT_EQ(exchange(20 | kLeave, Bytes(3)), stored);
    walk({0, 1, 0}); // pauses and continues the shift
    EXPECT_EQ(exchange(20 | kLeave, stored), Bytes(3)) << "the bits shifted in come out";
    toIdle();
    EXPECT_EQ(jtagData(kSerial), stored);
}

TEST_F(JtagDevice, TheLogShowsEveryClockAndCountsEqualOnes) {
    walk({0});
    select(kJtagBypass);
    startJtagLog(kSerial);
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(control(0x3FF));
    }
    toShiftDr();
    exchange(3 | kLeave, {0x06});
    using Run = std::tuple<TapState, bool, bool, bool, std::uint64_t>; // TMS, TDI, TDO, clocks
    std::vector<Run> log;
    for (const JtagClocks& run : takeJtagLog(kSerial)) {
        log.emplace_back(run.state, run.tms, run.tdi, run.tdo, run.clocks);
    }
    EXPECT_EQ(log, (std::vector<Run>{{TapState::RunTestIdle, 0, 1, 1, 40 * 256},
                                     {TapState::RunTestIdle, 1, 1, 1, 1},
                                     {TapState::SelectDr, 0, 1, 1, 1},
                                     {TapState::CaptureDr, 0, 1, 1, 1},
                                     {TapState::ShiftDr, 0, 0, 0, 1},
                                     {TapState::ShiftDr, 0, 1, 0, 1},
                                     {TapState::ShiftDr, 1, 1, 1, 1}}));
}

TEST_F(JtagDevice, RefusedWordsClockNothing) {
    startJtagLog(kSerial);
    const struct {
        std::uint8_t target;
        std::uint32_t word;
        Bytes bytes;
        std::uint32_t code;
    } cases[] = {{kControl, 0x501, {}, kBusy},
                 {kControl, 0x402, {}, kInvalidArgument},
                 {kControl, 0x401, {0}, kInvalidArgument},
                 {kShift, kLeave, {0}, kOutOfRange},
                 {kShift, 2049, Bytes(257), kOutOfRange},
                 {kShift, 9, {0}, kInvalidArgument},
                 {kShift, 0x1008, {0}, kInvalidArgument},
                 {kShift, 8, {}, kInvalidArgument},
                 {0x18, 0x401, {}, kUnsupported}};
    for (const auto& [target, word, bytes, code] : cases) {
        EXPECT_FALSE(sdkRegisterWrite(handle, target, word, static_cast<std::uint32_t>(bytes.size()),
                                      bytes.empty() ? nullptr : bytes.data()));
        EXPECT_EQ(sdkGetLastErrorForCamera(handle), code) << "word " << word;
    }
    failNext(kSerial, Operation::sdkRegisterWrite, 1, kTimedOut);
    EXPECT_FALSE(control(0x400));
    EXPECT_TRUE(shift(2048, Bytes(256)));
    Bytes captured(256);
    EXPECT_FALSE(sdkRegisterRead(handle, kShift, 2047, 256, captured.data()));
    EXPECT_FALSE(sdkRegisterRead(handle, kShift, 2048, 255, captured.data()));
    EXPECT_TRUE(control(0x500));
    for (const std::uint32_t word : {0x500u, 0x101u, 0x000u, 0x001u, 0x300u, 0x401u}) {
        EXPECT_FALSE(control(word)) << "closed, word " << word;
    }
    EXPECT_FALSE(shift(8, {0}) || sdkRegisterRead(handle, kShift, 2048, 256, captured.data()));
    std::uint64_t clocks = 0;
    for (const JtagClocks& run : takeJtagLog(kSerial)) {
        clocks += run.clocks;
    }
    EXPECT_EQ(clocks, 2048u);
}

TEST_F(JtagDevice, AccessEndsWithItsHandleAndItsDevice) {
    void* const first = std::exchange(handle, sdkCameraOpen(1));
    EXPECT_FALSE(control(0x501) || control(0x400)) << "the first handle has access";
    ASSERT_TRUE(sdkCameraClose(first));
    EXPECT_FALSE(isJtagOpen(kSerial));
    ASSERT_TRUE(control(0x501));
    unplugDuring(kSerial, Operation::sdkRegisterWrite, 2);
    EXPECT_TRUE(shift(8, {0}));
    EXPECT_FALSE(shift(8, {0}));
    EXPECT_FALSE(control(0x500));
    EXPECT_EQ(sdkGetLastErrorForCamera(handle), kCameraGone);
    replug(kSerial);
    EXPECT_FALSE(isJtagOpen(kSerial));
}

} // namespace
