// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;

/// A device that can start in either mode, enumerated through both libraries.
class Usb3VisionRoundTripTest : public TestSupport::SoftwareDeviceFixture {
protected:
    Usb3VisionRoundTripTest() {
        Camera::registerDisconnectCallback([this](const std::string& model, const std::string& serial) {
            m_Events += "- " + model + " " + serial + "; ";
        });
        Camera::registerNewConnectCallback([this] { m_Events += "+; "; });
        m_Device = SoftwareDevices::defaultDevices()[0];
        m_Device.rebootTime = std::chrono::milliseconds(1);
        m_Serial = std::to_string(m_Device.serial);
    }
    ~Usb3VisionRoundTripTest() override {
        Camera::registerDisconnectCallback({});
        Camera::registerNewConnectCallback({});
    }

    Camera& camera() const { return Camera::getCamera(m_Serial); }

    void startReboot() {
        std::vector<std::string> mode{"Firmware"};
        camera().perform("Reboot", mode);
    }

    void reboot() {
        startReboot();
        TestSupport::dropVanishedCameras();
        const std::string without = m_Events;
        TestSupport::eventually([&] { return TestSupport::addNewCameras() && m_Events != without; });
        camera().connect();
    }

    DeviceDescription m_Device;
    std::string m_Serial;
    std::string m_Events; ///< reported by the callbacks
};

TEST_F(Usb3VisionRoundTripTest, ACameraGoesToUsb3VisionModeAndComesBack) {
    open(m_Device);
    EXPECT_EQ(value(camera(), "USB3 Vision Mode"), "Disabled");
    set(camera(), "USB3 Vision Mode", "Enabled");
    reboot();
    EXPECT_TRUE(SoftwareDevices::isUsb3Vision(m_Device.serial));
    EXPECT_EQ(m_Events, "- Model 613 41500101; +; ");
    EXPECT_EQ(camera().getSupportedFunctions(), std::vector<std::string>{"Reboot"});
    EXPECT_EQ(camera().getCameraInfo(), (std::map<std::string, std::string>{{"Model Name", "Model 613"},
                                                                            {"Serial Number", m_Serial},
                                                                            {"USB3 Vision Mode", "Enabled"},
                                                                            {"Vendor Name", "Meridane"}}));
    // A camera that is gone when the call returns has rebooted; a camera that stays and refuses has not.
    std::vector<std::string> mode{"Firmware"};
    SoftwareDevices::failNext(m_Device.serial, Operation::TarnuSglWrite, 1, 1);
    TestSupport::expectStandard<std::runtime_error>([&] { camera().perform("Reboot", mode); },
                                                    "Failed to reboot camera in the desired mode.");
    set(camera(), "USB3 Vision Mode", "Disabled");
    EXPECT_EQ(value(camera(), "USB3 Vision Mode"), "Disabled");
    set(camera(), "USB3 Vision Mode", "Enabled"); // its file is valid
    set(camera(), "USB3 Vision Mode", "Disabled");
    m_Events.clear();
    reboot();
    EXPECT_FALSE(SoftwareDevices::isUsb3Vision(m_Device.serial));
    EXPECT_EQ(m_Events, "- Model 613 41500101; +; ");
    EXPECT_TRUE(camera().isPropertySupported("Video Exposure"));
}

TEST_F(Usb3VisionRoundTripTest, ACameraThatComesBackAsAnotherKindBetweenTwoChecksIsDroppedAndFoundAgain) {
    struct Case {
        const char* name;
        void (*leave)(Camera&); // while it reboots
    };
    constexpr Case kCases[] = {{"connected", [](Camera&) {}},
                               {"disconnected", [](Camera& camera) { camera.disconnect(); }},
                               {"suspended", [](Camera& camera) { camera.suspend(); }}};
    open(m_Device);
    for (const char* mode : {"Enabled", "Disabled"}) {
        for (const Case& row : kCases) {
            SCOPED_TRACE(std::string(row.name) + ", USB3 Vision " + mode);
            set(camera(), "USB3 Vision Mode", mode);
            startReboot();
            row.leave(camera());
            TestSupport::eventually([] { return !SoftwareDevices::pluggedDevices().empty(); });
            m_Events.clear();
            if (camera().getState() == CameraState::Suspended) {
                TestSupport::dropVanishedCameras();
                EXPECT_EQ(m_Events, "") << "a suspended camera is kept";
                EXPECT_THROW(camera().connect(), KestrelExceptions::KestrelException_Camera);
                EXPECT_EQ(camera().getState(), CameraState::Suspended);
                TestSupport::dropVanishedCameras();
            }
            TestSupport::dropVanishedCameras();
            TestSupport::addNewCameras();
            EXPECT_EQ(m_Events, "- Model 613 41500101; +; ");
            camera().connect();
            EXPECT_EQ(value(camera(), "USB3 Vision Mode"), mode);
            if (mode == std::string("Enabled") || &row != std::end(kCases) - 1) { // and back for the next case
                set(camera(), "USB3 Vision Mode", mode == std::string("Enabled") ? "Disabled" : "Enabled");
                reboot();
            }
        }
    }
}

TEST_F(Usb3VisionRoundTripTest, AnUnpluggedCameraHasRebootedForAllOneKnows) {
    open(m_Device);
    set(camera(), "USB3 Vision Mode", "Enabled");
    reboot();
    std::vector<std::string> mode{"Bootloader"};
    SoftwareDevices::unplugDuring(m_Device.serial, Operation::TarnuSglWrite, 1);
    EXPECT_NO_THROW(camera().perform("Reboot", mode));
    EXPECT_FALSE(camera().isCameraAlive());
    TestSupport::dropVanishedCameras();
    TestSupport::expectFailure<KestrelExceptions::KestrelException_Camera>(
        [&] { camera(); }, "CameraNotFound", "Camera was not found in the list of available cameras.");
}

} // namespace
