// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Camera.h"

#include <array>
#include <atomic>
#include <functional>
#include <utility>

#include <gtest/gtest.h>

#include "Cameras/CameraWorkspace.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/ListMaintenance.h"
#include "Support/OrvexApiChange.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace CameraInterface;
using TestSupport::dropVanishedCameras;
using TestSupport::OrvexApiChange;

/// Three devices with small pictures. Counts the open handles.
class HotPlugTest : public TestSupport::SoftwareDeviceFixture {
protected:
    HotPlugTest() {
        for (const std::uint32_t serial : kSerials) {
            SoftwareDevices::DeviceDescription description = SoftwareDevices::defaultDevices()[1];
            description.serial = description.hardwareRevision = serial;
            description.sensorWidth = 16;
            description.sensorHeight = 8;
            SoftwareDevices::plug(description);
        }
    }

    static constexpr std::array<std::uint32_t, 3> kSerials{1, 2, 3};
    inline static std::function<void()> s_Meanwhile; // runs once, in the middle of the next opening, query or closing
    inline static std::atomic<int> s_OpenHandles{0};

private:
    static void happenMeanwhile() {
        if (s_Meanwhile) {
            std::exchange(s_Meanwhile, nullptr)();
        }
    }
    static void changeApi(OrvexAdapter::OrvexApi& api) {
        api.sdkCameraOpen = [](std::uint32_t index) {
            happenMeanwhile();
            void* const handle = OrvexApiChange::original().sdkCameraOpen(index);
            s_OpenHandles += handle != nullptr ? 1 : 0;
            return handle;
        };
        api.sdkCameraClose = [](void* handle) {
            const std::uint32_t closed = OrvexApiChange::original().sdkCameraClose(handle);
            s_OpenHandles -= closed != 0 ? 1 : 0;
            happenMeanwhile();
            return closed;
        };
        api.sdkQueryVersion = [](void* handle, ORVEX_VERSION* version) {
            happenMeanwhile();
            return OrvexApiChange::original().sdkQueryVersion(handle, version);
        };
    }

    OrvexApiChange m_Change{changeApi};
};

TEST_F(HotPlugTest, WhatOthersDoInTheMiddleOfACheckOrAConnectMisleadsNobody) {
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera("2");
    camera.connect();
    s_Meanwhile = [&] { camera.disconnect(); };
    dropVanishedCameras();
    camera.connect();
    s_Meanwhile = [] { dropVanishedCameras(); };
    camera.disconnect();
    EXPECT_EQ(Camera::getCamerasList().count("2"), 1U) << "it is closed, not gone";
    s_Meanwhile = [] { SoftwareDevices::unplug(kSerials[0]); };
    camera.connect(); // another camera has its place: the library searches again
    EXPECT_EQ(camera.getProperty("Hardware Revision").getValue(), "2");
    camera.disconnect();
    s_Meanwhile = [] { CameraWorkspace::instance().cameras().retire("2"); };
    EXPECT_THROW(camera.connect(), KestrelExceptions::KestrelException_Camera) << "the camera retired meanwhile";
    EXPECT_EQ(s_OpenHandles, 0);
}

TEST_F(HotPlugTest, CamerasThatLeftCloseTheirHandles) {
    for (std::size_t cycle = 0; cycle < 2 * CameraList::kMaximumRetired; ++cycle) {
        const std::uint32_t serial = kSerials[cycle % kSerials.size()];
        Camera::searchForNewCameras();
        Camera& camera = Camera::getCamera(std::to_string(serial));
        camera.connect();
        if (cycle % 2 == 0) {
            camera.startStream();
        }
        SoftwareDevices::unplug(serial);
        dropVanishedCameras();
        SoftwareDevices::replug(serial);
        ASSERT_LE(s_OpenHandles, static_cast<int>(CameraList::kMaximumRetired)) << "one for each retired camera";
    }
    Camera::searchForNewCameras();
    Camera& suspended = Camera::getCamera("1");
    suspended.connect();
    suspended.suspend();
    SoftwareDevices::unplug(1);
    Camera::unitialisedWorkpace();
    EXPECT_EQ(s_OpenHandles, 0);
}

} // namespace
