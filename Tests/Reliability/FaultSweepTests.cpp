// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/Event.h"
#include "Support/Images.h"
#include "Support/ListMaintenance.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Utilities/Programmer.h"
#include "Utilities/Watchdog.h"

namespace {

using namespace CameraInterface;
using Utilities::Programmer;
using Bytes = std::vector<unsigned char>;
using WordSet = std::set<std::string>;

constexpr std::uint32_t kSweptSerial = 41500101;
const std::string kSerialNumber = std::to_string(kSweptSerial);

constexpr std::array<std::uint32_t, 6> kErrorCodes{
    SoftwareDevices::kPropertyUnsupported, SoftwareDevices::kPropertyNotWritable,
    SoftwareDevices::kCaptureEnded,        SoftwareDevices::kTimedOut,
    SoftwareDevices::kCameraGone,          SoftwareDevices::kInternalError};

Camera& camera() {
    return Camera::getCamera(kSerialNumber);
}

bool isPlugged() {
    return SoftwareDevices::pluggedDevices() == std::vector<std::uint32_t>{kSweptSerial};
}

void updateList() {
    TestSupport::dropVanishedCameras();
    TestSupport::addNewCameras();
}

/// Waits until the device is back on the bus, replugged or rebooted, and listed. Waiting makes no boundary calls.
void awaitReboot() {
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::kLongEnough;
    while (!isPlugged() && std::chrono::steady_clock::now() < deadline) {
        try {
            SoftwareDevices::replug(kSweptSerial);
        } catch (const std::invalid_argument&) {
            std::this_thread::yield(); // rebooting
        }
    }
    SoftwareDevices::setAsFastAsAsked(kSweptSerial, true);
    updateList();
}

void reboot() {
    std::vector<std::string> mode{"Firmware"};
    camera().perform("Reboot", mode);
    awaitReboot();
    camera().connect();
}

void rebootWithUsb3VisionMode(const std::string& state) {
    camera().getProperty("USB3 Vision Mode").setValue(state);
    reboot();
}

void takeImage(const std::string& mode) {
    camera().getProperty("Streaming Mode").setValue(mode);
    camera().getImage();
}

Bytes bootImage() {
    Bytes image{'C', 'Y', 0x1C, 0xB0, 64, 0, 0, 0, 0, 1, 0, 0};
    image.resize(image.size() + 64 * 4, 0x5A);
    image.insert(image.end(), {0, 0, 0, 0, 0x34, 0x12, 0, 0x40});
    return image;
}

template <typename Action>
void forEachProperty(Action action) {
    for (const std::string& name : camera().getSupportedProperties()) {
        action(camera().getProperty(name));
    }
}

WordSet operator+(WordSet words, const WordSet& more) {
    words.insert(more.begin(), more.end());
    return words;
}

const WordSet kListing{"CameraNotFound"};
const WordSet kConnecting{"CameraConnection", "CameraEnumeration "};
const WordSet kReading{"PropertyReadFailure", "PropertyRangeReadFailure", "PropertyErrorUnknown", "PropertyUnknown"};
const WordSet kWriting{"PropertyWriteFailure",
                       "Desired value must be selected from one of the available options in the value list."};
const WordSet kStreaming{
    "InvalidStreamSettings", "RegisterStreamCallback", "RemoveStreamCallback", "StartStream", "StopStream",
    "StreamStopped"};
const WordSet kRebooting = kListing + kConnecting + WordSet{"FunctionExecution"};

/// An action of an application on a connected camera, and the exceptions it may get when a call fails meanwhile: the
/// word of an exception of the library, the text of a standard exception.
struct Scenario {
    const char* name;
    void (*action)();
    WordSet words;
    std::size_t device = 0; ///< index of the default device
};

void PrintTo(const Scenario& scenario, std::ostream* stream) {
    *stream << scenario.name << scenario.device;
}

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> table{
        {"Connect",
         [] {
             camera().disconnect();
             camera().connect();
         },
         kConnecting},
        {"ReadProperties",
         [] {
             forEachProperty([](Property& property) {
                 property.getValue();
                 property.getMinimum();
                 property.getMaximum();
                 property.getDefault();
                 property.getValueList();
                 property.isReadOnly();
             });
         },
         kReading},
        {"WriteProperties",
         [] {
             forEachProperty([](Property& property) {
                 if (!property.isReadOnly() && property.isAvailableForWriting()) {
                     property.setValue(property.getDefault());
                 }
             });
         },
         kReading + kWriting},
        {"VideoImage", [] { takeImage("Video"); }, kReading + kStreaming},
        {"StillImage", [] { takeImage("Still"); }, kReading + kStreaming},
        {"Stream",
         [] {
             camera().getProperty("Streaming Mode").setValue("Video");
             camera().startStream();
             for (int frame = 0; frame < 5; ++frame) {
                 camera().getImage();
             }
             camera().stopStream();
         },
         kReading + kStreaming},
        {"FrameQueue",
         [] {
             FrameQueue queue = camera().openFrameQueue({2, WhenFull::HoldBack, {}});
             camera().startStream();
             for (int frame = 0; frame < 3; ++frame) {
                 queue.pop(TestSupport::kLongEnough);
             }
             camera().stopStream();
         },
         kReading + kStreaming},
        {"IncompleteFrames",
         [] {
             SoftwareDevices::truncateFrames(kSweptSerial, 2, 100);
             takeImage("Video");
         },
         kReading + kStreaming},
        {"FailedStopAndClose",
         [] {
             camera().getProperty("Streaming Mode").setValue("Still");
             camera().startStream();
             for (const auto operation :
                  {SoftwareDevices::Operation::sdkDisableStillMode, SoftwareDevices::Operation::sdkRemoveStillCallback,
                   SoftwareDevices::Operation::sdkCameraClose}) {
                 SoftwareDevices::failNext(kSweptSerial, operation, 1, SoftwareDevices::kInternalError);
             }
             try {
                 camera().disconnect();
             } catch (const KestrelExceptions::KestrelException_Stream&) { // expected
             }
             camera().disconnect();
             camera().connect();
         },
         kConnecting + kReading + kStreaming},
        {"Convert",
         [] {
             using Imaging::IMAGE_FORMAT;
             for (const auto format : {IMAGE_FORMAT::MONO, IMAGE_FORMAT::BGR, IMAGE_FORMAT::BGRA, IMAGE_FORMAT::RGB}) {
                 camera().convertImage(TestSupport::patternImage(16, 8, 8, Imaging::IMAGE_FORMAT::BAYER_RGGB, true),
                                       format);
             }
         },
         kReading + WordSet{"Failed to convert image."}},
        {"FirmwareUpdate",
         [] {
             Programmer::writeFirmwareToFlash(camera(), bootImage(), 0, 1U << 20, 64, {});
             EXPECT_TRUE(Programmer::compareFlash(camera(), bootImage(), 0, 64, {}));
         },
         {"FunctionExecution"}},
        {"PlayXsvf",
         [] {
             // An instruction of 8 bits, a register of 32 bits, and the end.
             Programmer::jtagXsvf(camera(), {0x02, 8, 0x02, 0x08, 0, 0, 0, 32, 0x03, 1, 2, 3, 4, 0x00});
         },
         {}},
        {"RamLoad",
         [] {
             Programmer::writeFirmwareToRam(camera(), bootImage(), {});
             awaitReboot();
             camera().connect();
         },
         kRebooting},
        {"ModeChange", [] { rebootWithUsb3VisionMode("Enabled"); },
         kRebooting + kReading + kWriting + WordSet{"Failed to reboot camera in the desired mode."}},
        {"ModeChangeWhileClosed",
         [] {
             camera().getProperty("USB3 Vision Mode").setValue("Enabled");
             std::vector<std::string> mode{"Firmware"};
             camera().perform("Reboot", mode);
             camera().disconnect();
             awaitReboot();
             camera().connect();
             rebootWithUsb3VisionMode("Disabled");
         },
         kRebooting + kReading + kWriting + WordSet{"Failed to reboot camera in the desired mode."}},
        {"SuspendAndResume",
         [] {
             camera().suspend();
             camera().connect();
         },
         kConnecting},
        {"EndWorkspaceWhileStreaming",
         [] {
             camera().startStream();
             Camera::unitialisedWorkpace();
         },
         kReading + kStreaming},
        {"EndWorkspaceWhileSuspended",
         [] {
             camera().suspend();
             Camera::unitialisedWorkpace();
         },
         kConnecting},
        {"BeginWorkspace",
         [] {
             Camera::unitialisedWorkpace();
             Camera::searchForNewCameras();
             camera().connect();
         },
         kListing + kConnecting},
        {"ListMaintenance",
         [] {
             camera().disconnect();
             updateList();
             updateList();
             Camera::searchForNewCameras();
             camera().connect();
         },
         kConnecting},
    };
    return table;
}

/// The scenarios that differ between devices: probing at connection, and capturing.
std::vector<Scenario> scenariosOfOtherDevices() {
    std::vector<Scenario> table;
    for (Scenario scenario : scenarios()) {
        if (WordSet{"Connect", "VideoImage", "StillImage"}.count(scenario.name) != 0) {
            for (scenario.device = 1; scenario.device < SoftwareDevices::defaultDevices().size(); ++scenario.device) {
                table.push_back(scenario);
            }
        }
    }
    return table;
}

class FaultSweep : public TestSupport::SoftwareDeviceFixture, public ::testing::WithParamInterface<Scenario> {
protected:
    FaultSweep() {
        SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[GetParam().device];
        device.serial = kSweptSerial;
        device.sensorWidth = 64;
        device.sensorHeight = 48;
        device.rebootTime = std::chrono::milliseconds(0);
        SoftwareDevices::plug(device);
        SoftwareDevices::setAsFastAsAsked(kSweptSerial, true);
        ready();
        m_Properties = camera().getSupportedProperties();
        for (int run = 0; run < 5; ++run) { // takes the minimum: a stream's worker may have made extra calls
            ready();
            const std::uint64_t before = SoftwareDevices::boundaryCalls();
            GetParam().action();
            m_Calls = std::min(m_Calls, SoftwareDevices::boundaryCalls() - before);
        }
    }
    ~FaultSweep() override {
        RecordProperty("calls", std::to_string(m_Calls));
        RecordProperty("faults", m_Faults);
        useAdapters({});
    }

    /// Lists and connects the camera and clears all faults, in any previous state.
    void ready() {
        SoftwareDevices::clearFaults();
        awaitReboot();
        if (camera().isStreaming()) {
            camera().stopStream();
        }
        camera().connect();
        if (SoftwareDevices::isUsb3Vision(kSweptSerial)) {
            rebootWithUsb3VisionMode("Disabled");
        }
        if (!hasAllProperties()) {
            camera().disconnect();
            camera().connect();
            EXPECT_TRUE(hasAllProperties());
        }
    }

    bool hasAllProperties() const {
        const auto names = camera().getSupportedProperties();
        return std::includes(names.begin(), names.end(), m_Properties.begin(), m_Properties.end());
    }

    /// Performs the action while a call fails.
    void disturbed() {
        ++m_Faults;
        SoftwareDevices::startLog();
        try {
            GetParam().action();
        } catch (const KestrelExceptions::KestrelException& failure) {
            expectAllowed(failure.who());
        } catch (const std::exception& failure) {
            expectAllowed(failure.what());
        }
        const std::vector<SoftwareDevices::CallRecord> calls = SoftwareDevices::takeLog();
        m_CloseFailed |= std::any_of(calls.begin(), calls.end(), [](const SoftwareDevices::CallRecord& call) {
            return call.operation == SoftwareDevices::Operation::sdkCameraClose && !call.succeeded;
        });
        SoftwareDevices::clearFaults();
    }

    /// After an unplug, the camera may already have left the list.
    void expectAllowed(const std::string& word) {
        EXPECT_TRUE(GetParam().words.count(word) != 0 || (m_IsUnplugged && kListing.count(word) != 0)) << word;
    }

    void expectConsistent() {
        awaitReboot();
        if (Camera::getCamerasList().count(kSerialNumber) != 0) {
            const CameraState state = camera().getState();
            if (state != CameraState::Suspended && !m_CloseFailed) { // suspended: open, or could not be resumed
                EXPECT_EQ(state == CameraState::Connected, SoftwareDevices::isOpen(kSweptSerial));
            }
            EXPECT_TRUE(camera().isStreaming() || !SoftwareDevices::isStreaming(kSweptSerial));
        }
    }

    void expectTheSameSucceeds() {
        EXPECT_NO_THROW({
            ready();
            GetParam().action();
        });
    }

    std::vector<std::string> m_Properties;
    std::uint64_t m_Calls = std::numeric_limits<std::uint64_t>::max();
    int m_Faults = 0;
    bool m_IsUnplugged = false;
    bool m_CloseFailed = false;
};

std::string nameOf(const ::testing::TestParamInfo<Scenario>& info) {
    return ::testing::PrintToString(info.param);
}

INSTANTIATE_TEST_SUITE_P(EveryCall, FaultSweep, ::testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(OtherDevices, FaultSweep, ::testing::ValuesIn(scenariosOfOtherDevices()), nameOf);

TEST_P(FaultSweep, AFailureIsReportedAndLeavesNothingBehind) {
    for (std::uint64_t call = 1; call <= m_Calls; ++call) {
        for (const std::uint32_t error : kErrorCodes) {
            SCOPED_TRACE("call " + std::to_string(call) + ", error " + std::to_string(error));
            ready();
            SoftwareDevices::failCall(call, error);
            disturbed();
            expectConsistent();
            expectTheSameSucceeds();
            if (HasFailure()) {
                return;
            }
        }
        Camera::unitialisedWorkpace();
        if (m_CloseFailed) { // the close is not retried: the device may keep the handle until it leaves the bus
            SoftwareDevices::unplug(kSweptSerial);
            m_CloseFailed = false;
        } else {
            EXPECT_FALSE(SoftwareDevices::isOpen(kSweptSerial));
        }
    }
}

TEST_P(FaultSweep, AnUnplugIsReportedAndLeavesNothingBehind) {
    m_IsUnplugged = true;
    for (std::uint64_t call = 1; call <= m_Calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call));
        ready();
        {
            Utilities::Watchdog watchdog; // like the list's own, but immediate, and without a call before the unplug
            watchdog.start(1, [] {
                if (SoftwareDevices::pluggedDevices().empty()) {
                    TestSupport::dropVanishedCameras();
                }
                return true;
            });
            SoftwareDevices::unplugCall(kSweptSerial, call);
            disturbed();
        }
        expectConsistent();
        expectTheSameSucceeds();
        Camera::unitialisedWorkpace();
        EXPECT_FALSE(SoftwareDevices::isOpen(kSweptSerial));
        if (HasFailure()) {
            return;
        }
    }
}

} // namespace
