// SPDX-License-Identifier: Apache-2.0

#include "Support/FlatDeviceFixture.h"

#include <cstring>

namespace {

using namespace SoftwareDevices;
using namespace TestSupport;

constexpr std::uint32_t kBlock = 0x1B0000;
constexpr std::uint32_t kFile = 0x1B8000;

struct Usb3VisionDevice : FlatDeviceFixture {
    Usb3VisionDevice() {
        device.modelName = "Model 613";
        device.usb3VisionFile = {1, 2, 3, 4, 5};
        device.rebootTime = std::chrono::milliseconds(10);
    }

    static void setMode(std::uint8_t mode) { writeFlash(kSerial, kBlock, {mode}); }
    /// Plugs the device in, and again as a USB3 Vision camera.
    void* openUsb3Vision() {
        plug(device);
        setMode(0);
        unplug(kSerial);
        replug(kSerial);
        Usb3VisionCameraRecord record{};
        EXPECT_EQ(TarnuEnumCameras(&record, 1), 1u);
        return TarnuOpenCamera(&record);
    }
    static bool rebootUsb3Vision(void* camera) {
        const std::uint8_t nothing = 0;
        return TarnuSglWrite(camera, 0x1B, 0x1B, 1, 1, &nothing) != 0;
    }

    DeviceDescription device = smallDevice(ColorFormat::MONO);
};

TEST_F(Usb3VisionDevice, OnlyAnIntactFileBehindItsBlockMakesOne) {
    const struct {
        const char* name;
        std::uint32_t address;
        Bytes bytes;
        bool isUsb3Vision;
    } cases[] = {{"as stored", kFile, {1}, true},
                 {"another mode", kBlock, {1}, false},
                 {"no size", kBlock + 4, {0, 0, 0, 0}, false},
                 {"a size beyond the flash", kBlock + 4, {5, 0, 0, 0xF0}, false},
                 {"a shorter size", kBlock + 4, {4}, false},
                 {"another digest", kBlock + 31, {0}, false},
                 {"another file", kFile + 4, {6}, false}};
    for (const auto& [name, address, bytes, expected] : cases) {
        plug(device);
        setMode(0);
        writeFlash(kSerial, address, bytes);
        unplug(kSerial);
        replug(kSerial);
        EXPECT_EQ(isUsb3Vision(kSerial), expected) << name;
        EXPECT_EQ(sdkNumCameras(), expected ? 0 : 1) << name;
    }
}

TEST_F(Usb3VisionDevice, ForeignAndStaleHandlesAndRecordsAreRefused) {
    DeviceDescription sdkDevice = smallDevice(ColorFormat::MONO);
    sdkDevice.serial = 8;
    open(sdkDevice);
    void* const camera = openUsb3Vision();
    ASSERT_TRUE(camera);
    std::uint8_t byte = 0;
    Usb3VisionCameraRecord record{};
    ASSERT_TRUE(TarnuEnumCameras(&record, 1));
    record.serialNumber = 8;
    EXPECT_FALSE(TarnuOpenCamera(&record) || TarnuOpenCamera(nullptr));
    record = {"Model 61", kSerial};
    EXPECT_FALSE(TarnuOpenCamera(&record));
    std::memset(&record, 'M', sizeof record); // a text without a terminator
    EXPECT_FALSE(TarnuOpenCamera(&record));

    EXPECT_FALSE(TarnuFlashRead(handle, &byte, 0, 1) || TarnuCloseCamera(handle)) << "the camera SDK's handle";
    EXPECT_FALSE(sdkReadFlash(camera, &byte, 0, 1) || sdkCameraClose(camera)) << "the other library's handle";
    EXPECT_TRUE(sdkReadFlash(handle, &byte, 0, 1) && TarnuFlashRead(camera, &byte, 0, 1));

    EXPECT_FALSE(TarnuFlashRead(camera, &byte, kFlashSize, 1));
    EXPECT_FALSE(TarnuFlashRead(camera, nullptr, 0, 1));
    EXPECT_FALSE(TarnuWriteBootSequence(camera, 2));
    EXPECT_FALSE(TarnuSglWrite(camera, 0x1B, 0x1C, 1, 1, &byte) || TarnuSglWrite(camera, 0x1B, 0x1B, 2, 1, &byte) ||
                 TarnuSglWrite(camera, 0x1B, 0x1B, 1, 0, nullptr));

    unplug(kSerial);
    EXPECT_FALSE(TarnuFlashRead(camera, &byte, 0, 1) || TarnuWriteBootSequence(camera, 1) || rebootUsb3Vision(camera));
    EXPECT_TRUE(TarnuCloseCamera(camera)) << "an open camera can be closed";
    EXPECT_FALSE(TarnuCloseCamera(camera) || TarnuFlashRead(camera, &byte, 0, 1));
}

} // namespace
