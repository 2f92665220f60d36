// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "OrvexApi/OrvexApi.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::expectThrown;
using TestSupport::lineOf;

class CameraStateTest : public TestSupport::SoftwareDeviceFixture {
protected:
    /// A kind of camera that has a device.
    struct Kind {
        const char* name; ///< of the class and its file
        Camera& (*open)(const DeviceDescription& description);
        Operation query; ///< checks whether it is alive
        /// The number of queries, by number of failures.
        std::array<std::uint64_t, 4> queries;
    };
    inline static const Kind kKinds[] = {
        {"OrvexCamera", open, Operation::sdkQueryVersion, {3, 3, 3, 3}},
        {"Usb3VisionCamera", openUsb3Vision, Operation::TarnuFlashRead, {1, 2, 3, 3}},
    };

    /// A device that supports both modes.
    static DeviceDescription device() { return SoftwareDevices::defaultDevices()[0]; }

    static std::uint32_t refuseToClose(void* /*handle*/) {
        s_StatesAtClosing.push_back(s_Closing->getState());
        return 0;
    }
    inline static Camera* s_Closing = nullptr;
    inline static std::vector<CameraState> s_StatesAtClosing;

    static std::string failureOf(const std::string& className, const std::string& word, const std::string& why) {
        return word + "[Shared/src/Cameras/" + className + "/" + className + ".cpp]" + why;
    }
    static void expectRefusals(const std::string& className, Camera& camera) {
        const auto expectRefused = [&](void (Camera::*operation)(), const std::string& states) {
            EXPECT_EQ(lineOf(expectThrown<KestrelException_CameraState>([&] { (camera.*operation)(); })),
                      failureOf(className, "CameraState",
                                "Failed to transition from " + states + ". State transition not allowed."));
        };
        camera.suspend();
        expectRefused(&Camera::disconnect, "suspended to disconnected");
        expectRefused(&Camera::suspend, "suspended to suspended");
        camera.connect();
        camera.disconnect();
        expectRefused(&Camera::suspend, "disconnected to suspended");
    }
};

TEST_F(CameraStateTest, RefusalsNameTheStatesAndTheCamerasOwnFile) {
    for (const Kind& kind : kKinds) {
        Camera& camera = kind.open(device());
        expectRefusals(kind.name, camera);
        SoftwareDevices::unplugAll();
        EXPECT_EQ(lineOf(expectThrown<KestrelException_Camera>([&] { camera.connect(); })),
                  failureOf(kind.name, "CameraConnection",
                            "Error with camera {serial number: 41500101}: Failed to connect to camera."));
        EXPECT_EQ(camera.getState(), CameraState::Disconnected);
        Camera::unitialisedWorkpace();
    }
    describeCameras(R"({"Cameras": [{"Identification": {"Model Name": "M", "Serial Number": "1"},
                                     "Properties": [], "Functions": []}]})");
    useAdapters({simulatedAdapter()});
    Camera::searchForNewCameras();
    Camera::getCamera("1").connect();
    expectRefusals("SimulatedCamera", Camera::getCamera("1"));
}

TEST_F(CameraStateTest, AHandleIsClosedOnceAndTheCameraIsConnectedUntilThen) {
    OrvexAdapter::OrvexApi api = OrvexAdapter::orvexApi();
    Usb3VisionAdapter::TarnuLibrary library = Usb3VisionAdapter::tarnuLibrary();
    api.sdkCameraClose = library.TarnuCloseCamera = refuseToClose;
    OrvexAdapter::useOrvexApi(&api);
    Usb3VisionAdapter::useTarnuLibrary(&library);
    for (const Kind& kind : kKinds) {
        Camera& camera = kind.open(device());
        s_Closing = &camera;
        s_StatesAtClosing.clear();
        camera.disconnect();
        EXPECT_TRUE(camera.isConnected()) << "a close that fails leaves the camera as it was";
        camera.suspend();
        camera.connect();
        EXPECT_EQ(s_StatesAtClosing, (std::vector<CameraState>{CameraState::Connected, CameraState::Suspended}))
            << kind.name;
        Camera::unitialisedWorkpace();
    }
    OrvexAdapter::useOrvexApi(nullptr);
    Usb3VisionAdapter::useTarnuLibrary(nullptr);
}

TEST_F(CameraStateTest, NoHandleIsLeftOpen) {
    for (const Kind& kind : kKinds) {
        Camera& camera = kind.open(device());
        camera.suspend();
        camera.connect();
        camera.disconnect();
        EXPECT_FALSE(SoftwareDevices::isOpen(device().serial)) << kind.name << ": opened anew without closing";
        camera.connect();
        camera.suspend();
        Camera::unitialisedWorkpace();
        EXPECT_FALSE(SoftwareDevices::isOpen(device().serial)) << kind.name << ": destroyed while suspended";
    }
}

TEST_F(CameraStateTest, TwoFailuresOfThreeAttemptsMakeACameraDead) {
    for (const Kind& kind : kKinds) {
        Camera& camera = kind.open(device());
        for (std::uint32_t failures = 0; failures < kind.queries.size(); ++failures) {
            SCOPED_TRACE(std::string(kind.name) + ", failures: " + std::to_string(failures));
            SoftwareDevices::failNext(device().serial, kind.query, failures, SoftwareDevices::kInternalError);
            const std::uint64_t before = SoftwareDevices::calls(kind.query);
            EXPECT_EQ(camera.isCameraAlive(), failures < 2);
            EXPECT_EQ(SoftwareDevices::calls(kind.query) - before, kind.queries[failures]);
            SoftwareDevices::clearFaults();
        }
        Camera::unitialisedWorkpace();
    }
}

} // namespace
