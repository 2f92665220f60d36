// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Camera.h"

#include <array>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>

#include "Cameras/CameraWorkspace.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/NoThreads.h"
#include "Support/OrvexApiChange.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using SoftwareDevices::Operation;
using TestSupport::dropVanishedCameras;
using TestSupport::expectFailure;
using TestSupport::OrvexApiChange;
using Listed = std::map<std::string, std::string>;

/// Counts its objects, and cannot always say its name.
class CountedCamera : public SimulatedAdapter::SimulatedCamera {
public:
    CountedCamera() : SimulatedCamera("1", "Counted") { ++s_Objects; }
    CountedCamera(const CountedCamera&) = delete;
    CountedCamera& operator=(const CountedCamera&) = delete;
    ~CountedCamera() override { --s_Objects; }

    std::string getModelName() override {
        return s_IsNameless ? throw std::runtime_error("The model name cannot be read.") : "Counted";
    }

    static std::vector<std::unique_ptr<Camera>> enumerate() {
        std::vector<std::unique_ptr<Camera>> one;
        one.push_back(std::make_unique<CountedCamera>());
        return one;
    }

    inline static std::atomic<int> s_Objects{0};
    inline static bool s_IsNameless = false;
};

/// Three devices with a small picture, a camera that has the serial number of the first one, and a simulated camera.
/// Counts the handles that are open.
class CameraListTest : public TestSupport::SoftwareDeviceFixture {
protected:
    CameraListTest() {
        auto adapters = getCameraAdapters();
        adapters.push_back({"counted cameras", CountedCamera::enumerate});
        adapters.push_back(simulatedAdapter());
        useAdapters(adapters);
        describeCameras(R"({"Cameras": [{"Identification": {"Model Name": "Simulated", "Serial Number": "4"}}]})");
        CountedCamera::s_IsNameless = false;
        for (const std::uint32_t serial : kSerials) {
            SoftwareDevices::DeviceDescription description = SoftwareDevices::defaultDevices()[1];
            description.serial = description.hardwareRevision = serial;
            description.sensorWidth = 16;
            description.sensorHeight = 8;
            SoftwareDevices::plug(description);
        }
    }

    static constexpr std::array<std::uint32_t, 3> kSerials{1, 2, 3};
    /// What happens once, in the middle of the next opening, query or closing.
    inline static std::function<void()> s_Meanwhile;
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

TEST_F(CameraListTest, WatchingStartsOnceThreadsCanBeHad) {
    if (!TestSupport::NoThreads::isPossible) {
        GTEST_SKIP() << "The system cannot be kept from starting threads.";
    }
    for (const bool isFirstStart : {true, false}) {
        if (!isFirstStart) {
            Camera::initialiseWorkspace();
        }
        {
            const TestSupport::NoThreads none;
            EXPECT_THROW(isFirstStart ? Camera::initialiseWorkspace() : Camera::registerDisconnectCallback({}),
                         std::system_error);
        }
        Camera::initialiseWorkspace();
        SoftwareDevices::unplug(2);
        EXPECT_TRUE(TestSupport::eventually([] { return Camera::getCamerasList().count("2") == 0; }));
        Camera::unitialisedWorkpace();
        SoftwareDevices::replug(2);
    }
}

TEST_F(CameraListTest, OneObjectPerSerialNumberFromTheAdapterAskedFirst) {
    Camera::initialiseWorkspace();
    Camera::initialiseWorkspace();
    EXPECT_EQ(Camera::getCamerasList(),
              (Listed{{"1", "Model 08A"}, {"2", "Model 08A"}, {"3", "Model 08A"}, {"4", "Simulated"}}));
    EXPECT_TRUE(TestSupport::eventually([] { return CountedCamera::s_Objects == 0; })) << "but for a check's";
    SoftwareDevices::plug(SoftwareDevices::defaultDevices()[0]);
    EXPECT_EQ(Camera::searchForNewCameras(), 1U);
    EXPECT_EQ(&Camera::getCamera("1"), &Camera::getCamera("1"));
}

TEST_F(CameraListTest, AFailingAdapterStopsNobodyAndIsNamed) {
    const std::uint32_t serial = SoftwareDevices::defaultDevices()[0].serial;
    openUsb3Vision(SoftwareDevices::defaultDevices()[0]);
    SoftwareDevices::failNext(SoftwareDevices::kNoDevice, Operation::TarnuEnumCameras, 2, SoftwareDevices::kTimedOut);
    describeCameras(R"({"Cameras": [{"Identification": {"Model Name": "Simulated", "Serial Number": "5"}}]})");
    EXPECT_EQ(Camera::searchForNewCameras(), 1U);
    EXPECT_EQ(Camera::getEnumerationFailures(), (Listed{{"USB3 Vision cameras", "Failed to enumerate cameras."}}));
    dropVanishedCameras();
    EXPECT_EQ(Camera::getCamerasList().count(std::to_string(serial)), 1U) << "it is connected and answers";
    Camera::searchForNewCameras();
    EXPECT_EQ(Camera::getEnumerationFailures(), Listed{});
}

TEST_F(CameraListTest, ACameraThatCannotSayItsNameIsLeftOutButKept) {
    SoftwareDevices::unplug(1);
    Camera::searchForNewCameras();
    EXPECT_EQ(Camera::getCamera("1").getModelName(), "Counted");
    CountedCamera::s_IsNameless = true;
    EXPECT_EQ(Camera::getCamerasList().count("1"), 0U);
    dropVanishedCameras();
    EXPECT_NO_THROW(Camera::getCamera("1"));
}

TEST_F(CameraListTest, VanishedCamerasAreDroppedAccordingToTheirState) {
    std::vector<std::string> reported;
    Camera::registerDisconnectCallback([&](const std::string& modelName, const std::string& serialNumber) {
        EXPECT_EQ(Camera::getCamerasList().count(serialNumber), 0U) << "the list already reflects the change";
        reported.push_back(modelName + " " + serialNumber);
        throw std::runtime_error("escaped");
    });
    Camera::searchForNewCameras();
    Camera& connected = Camera::getCamera("1");
    connected.connect();
    connected.startStream();
    Camera::getCamera("3").connect();
    Camera::getCamera("3").suspend();
    SoftwareDevices::unplugAll();
    dropVanishedCameras();
    EXPECT_EQ(Camera::getCamerasList(), (Listed{{"3", "Model 08A"}, {"4", "Simulated"}})) << "suspended, and present";
    EXPECT_EQ(reported, (std::vector<std::string>{"Model 08A 1", "Model 08A 2"}));
    Camera::registerDisconnectCallback({});
    // The reference is still usable.
    EXPECT_FALSE(connected.isStreaming());
    EXPECT_EQ(value(connected, "Serial Number"), "1");
    connected.disconnect();
    expectFailure<KestrelException_Camera>([&] { connected.connect(); }, "CameraConnection",
                                           "Failed to connect to camera.");
}

TEST_F(CameraListTest, TenThousandReplugsLeaveMemoryFlat) {
    CameraList list;
    for (int cycle = 0; cycle < 10'000; ++cycle) {
        ASSERT_EQ(list.add(CountedCamera::enumerate()), 1U);
        ASSERT_TRUE(list.retire("1"));
        ASSERT_FALSE(list.retire("1"));
        ASSERT_LE(CountedCamera::s_Objects, static_cast<int>(CameraList::kMaximumRetired));
    }
    EXPECT_EQ(CountedCamera::s_Objects, static_cast<int>(CameraList::kMaximumRetired));
    list.clear();
    EXPECT_EQ(CountedCamera::s_Objects, 0);
}

TEST_F(CameraListTest, WhatOthersDoInTheMiddleOfACheckOrAConnectMisleadsNobody) {
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
    camera.connect(); // its place is that of another now: it is looked for again
    EXPECT_EQ(camera.getProperty("Hardware Revision").getValue(), "2");
    camera.disconnect();
    s_Meanwhile = [] { CameraWorkspace::instance().cameras().retire("2"); };
    EXPECT_THROW(camera.connect(), KestrelException_Camera) << "it retired in the middle";
    EXPECT_EQ(s_OpenHandles, 0);
}

TEST_F(CameraListTest, CamerasThatLeftCloseTheirHandles) {
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
        ASSERT_LE(s_OpenHandles, static_cast<int>(CameraList::kMaximumRetired)) << "one for each that retired";
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
