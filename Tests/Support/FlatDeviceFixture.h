// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <SoftwareDevices.h>

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "Support/Event.h"

// The devices through the two flat libraries; operations of the camera SDK have their role names.
#define DECLARE_OPERATION(role, number, Result, failure, parameters)                                                   \
    extern "C" Result orvexapi_##number parameters;                                                                    \
    [[maybe_unused]] static constexpr auto role = &orvexapi_##number;
ORVEX_OPERATIONS(DECLARE_OPERATION)
#undef DECLARE_OPERATION
#define DECLARE_OPERATION(name, Result, parameters) extern "C" Result name parameters;
TARNU_OPERATIONS(DECLARE_OPERATION)
#undef DECLARE_OPERATION

namespace TestSupport {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kSerial = 7;
constexpr std::uint32_t kGain = 40;

/// A device with a small sensor without noise, whose samples are those of the scene.
inline SoftwareDevices::DeviceDescription smallDevice(SoftwareDevices::ColorFormat colorFormat,
                                                      std::uint32_t bitDepth = 12, bool bigEndian = false) {
    SoftwareDevices::DeviceDescription device;
    device.serial = kSerial;
    device.firmware = 0x100;
    device.sensorWidth = 24;
    device.sensorHeight = 16;
    device.unitWidth = device.unitHeight = 2;
    device.colorFormat = colorFormat;
    device.bitDepth = bitDepth;
    device.bigEndian = bigEndian;
    device.frameRates = {10, 1000};
    device.sampling = SoftwareDevices::SamplingCapability{false, {2, 4}, {2, 3}};
    device.noise = 0;
    device.properties = {{20, 10, 0, 1000, 10}, {kGain, 1, 1, 8, 1}, {126, 0, 0, 3, 0}};
    return device;
}

/// Starts without devices; the handle is that of the last device opened through the camera SDK.
struct FlatDeviceFixture : testing::Test {
    FlatDeviceFixture() { SoftwareDevices::startEmpty(); }
    ~FlatDeviceFixture() override { SoftwareDevices::startEmpty(); }

    void open(const SoftwareDevices::DeviceDescription& description) {
        SoftwareDevices::plug(description);
        SoftwareDevices::setAsFastAsAsked(description.serial, true);
        sdkSelectInterface(description.interfaceNumber);
        handle = sdkCameraOpen(1);
        ASSERT_NE(handle, nullptr);
    }

    void* handle = nullptr;
};

} // namespace TestSupport
