// SPDX-License-Identifier: Apache-2.0

#include "Support/FlatDeviceFixture.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

namespace {

using namespace SoftwareDevices;
using namespace TestSupport;

using SoftwareDevice = FlatDeviceFixture;

TEST_F(SoftwareDevice, PropertiesAreRefusedWithTheirCodes) {
    open(smallDevice(ColorFormat::RGGB));
    setProperty(kSerial, {30, 1, 0, 2, 1, 0, 0, false});
    const struct {
        std::uint32_t number;
        float value;
        std::uint32_t code;
    } cases[] = {{21, 1, kPropertyUnsupported}, {30, 1, kPropertyNotWritable}, {81, 24, kReadOnly},
                 {20, 1001, kOutOfRange},       {20, NAN, kOutOfRange},        {20, 12.5f, kNoError}};
    for (const auto& [number, value, code] : cases) {
        const bool written = sdkSetProperty(handle, number, value, 0x40000000);
        EXPECT_EQ(written ? kNoError : sdkGetLastErrorForCamera(handle), code) << number << " " << value;
    }
}

TEST_F(SoftwareDevice, ImpossibleFormatsAreRefusedAndTheOldOneStays) {
    open(smallDevice(ColorFormat::RGGB));
    const ORVEX_FRAME_FORMAT good{2, 4, 8, 8, 1, 2, 1, 4, 0};
    ASSERT_TRUE(sdkSetFormat(handle, &good, 1000));
    const ORVEX_FRAME_FORMAT refused[] = {
        {0, 0, 26, 16, 0, 1, 0, 1, 0}, {2, 0, 24, 16, 0, 1, 0, 1, 0}, {0, 0xFFFFFFFE, 24, 4, 0, 1, 0, 1, 0},
        {1, 0, 8, 8, 0, 1, 0, 1, 0},   {0, 0, 0, 16, 0, 1, 0, 1, 0},  {0, 0, 24, 16, 2, 1, 0, 1, 0},
        {0, 0, 24, 16, 3, 1, 0, 1, 0}, {0, 0, 24, 16, 0, 4, 1, 1, 0}, {0, 0, 24, 16, 0, 0, 0, 1, 0},
        {0, 0, 24, 16, 0, 1, 0, 2, 2}, {0, 0, 2, 2, 0, 4, 0, 1, 0},
    };
    for (const ORVEX_FRAME_FORMAT& format : refused) {
        EXPECT_FALSE(sdkSetFormat(handle, &format, 1000)) << &format - refused;
    }
    EXPECT_FALSE(sdkSetFormat(handle, &good, 500)) << "no such rate";
    const ORVEX_FRAME_FORMAT kept = frameFormat(kSerial);
    EXPECT_EQ(std::memcmp(&kept, &good, sizeof good), 0);
}

TEST_F(SoftwareDevice, FlashBehavesLikeNorAndOutlastsAReboot) {
    DeviceDescription device = smallDevice(ColorFormat::MONO);
    device.rebootTime = std::chrono::milliseconds(20);
    open(device);
    const std::uint8_t first[] = {0xF0, 0x0F}, second[] = {0x3C, 0xFF};
    const std::uint32_t address = 0xFFF; // across a page
    ASSERT_TRUE(sdkWriteFlash(handle, first, address, 2) && sdkWriteFlash(handle, second, address, 2));
    EXPECT_EQ(flash(kSerial, address - 1, 4), (Bytes{0xFF, 0x30, 0x0F, 0xFF}));
    ASSERT_TRUE(sdkUpdateFlash(handle, second, address, 2) && sdkEraseFlash(handle, address, 1));
    EXPECT_EQ(flash(kSerial, address, 2), (Bytes{0xFF, 0xFF}));
    EXPECT_FALSE(sdkWriteFlash(handle, first, kFlashSize - 1, 2));
    EXPECT_FALSE(sdkEraseFlash(handle, 0xFFFFFFFF, 2));
    ASSERT_TRUE(sdkUpdateFlash(handle, first, address, 2) && sdkCommandWrite(handle, 0x1B, 1, 1, first));
    EXPECT_EQ(sdkNumCameras(), 0) << "it is away";
    EXPECT_FALSE(sdkReadFlash(handle, nullptr, 0, 0));
    ASSERT_TRUE(eventually([] { return sdkNumCameras() == 1; }));
    EXPECT_EQ(flash(kSerial, address, 2), (Bytes{0xF0, 0x0F}));
    ASSERT_TRUE(handle = sdkCameraOpen(1));
    unplugDuring(kSerial, Operation::sdkEraseFlash, 1);
    EXPECT_FALSE(sdkEraseFlash(handle, address, 2));
    replug(kSerial);
    EXPECT_EQ(flash(kSerial, address, 2), (Bytes{0xFF, 0x0F})) << "half erased";
    ASSERT_TRUE(handle = sdkCameraOpen(1));
    ASSERT_TRUE(sdkEraseFlash(handle, 0, kFlashSize) && sdkWriteFlash(handle, first, kFlashSize - 2, 2));
    EXPECT_EQ(flash(kSerial, address, 2), (Bytes{0xFF, 0xFF}));
    ASSERT_TRUE(sdkEraseFlash(handle, kFlashSize - 2, 1));
    EXPECT_EQ(flash(kSerial, kFlashSize - 2, 2), (Bytes{0xFF, 0x0F})) << "the rest of a page stays";
}

TEST_F(SoftwareDevice, LeavesTheBusDuringACallThatHasNoMiddle) {
    const std::pair<Operation, std::function<std::uint32_t()>> calls[] = {
        {Operation::sdkCaptureVideoFrames, [this] { return sdkCaptureVideoFrames(handle, 1, nullptr); }}, // refused
        {Operation::sdkEraseFlash, [this] { return sdkEraseFlash(handle, kFlashSize + 1, 1); }},          // refused
        {Operation::sdkGetHardwareRevision, // fulfilled at once
         [this, revision = 0U]() mutable { return sdkGetHardwareRevision(handle, &revision); }},
    };
    for (const auto& [operation, call] : calls) {
        open(smallDevice(ColorFormat::MONO));
        unplugDuring(kSerial, operation, 1);
        EXPECT_EQ(call(), 0U);
        EXPECT_EQ(sdkNumCameras(), 0U) << static_cast<int>(operation);
    }
}

TEST_F(SoftwareDevice, ComesBackHoweverManyRebootItAtOnce) {
    DeviceDescription device = smallDevice(ColorFormat::MONO);
    device.rebootTime = std::chrono::milliseconds(1);
    plug(device);
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(eventually([] { return sdkNumCameras() == 1; })) << "round " << round;
        std::atomic<int> waiting{2};
        const auto reboot = [&waiting] {
            void* const mine = sdkCameraOpen(1);
            const std::uint8_t nothing = 0;
            for (--waiting; waiting > 0;) {
            }
            sdkCommandWrite(mine, 0x1B, 1, 1, &nothing);
            sdkCameraClose(mine);
        };
        std::thread other(reboot);
        reboot();
        other.join();
    }
}

} // namespace
