// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Conformance/Examination.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace QuillTool::Conformance;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;

const std::string kSimulatedSerial = "90001";
constexpr const char* kNoCameras = R"({"Cameras": []})";
constexpr const char* kSimulatedCamera = R"({"Cameras": [
  {"Identification": {"Model Name": "One", "Serial Number": "90001"},
   "Properties": [
    {"Name": "Gain", "Type": "Float", "Minimum": "0.0", "Maximum": "24.0", "Default": "1.5",
     "ReadOnly": false, "AvailableForWriting": true, "Discrete": false, "ValueList": []}],
   "Functions": [{"Name": "Read Flash", "Parameters": [], "Return Format": []}]}]})";

/// Cameras of every kind, which the test can unplug.
class ConformanceTest : public TestSupport::SoftwareDeviceFixture {
protected:
    ConformanceTest() {
        auto adapters = CameraInterface::getCameraAdapters();
        adapters.push_back(simulatedAdapter());
        useAdapters(adapters);
        describeCameras(kSimulatedCamera);
    }

    /// A device with small pictures, which take little time.
    static DeviceDescription smallDevice(std::size_t defaultDevice) {
        DeviceDescription device = SoftwareDevices::defaultDevices()[defaultDevice];
        device.sensorWidth = 64;
        device.sensorHeight = 48;
        return device;
    }

    static Plug plugOf(std::uint32_t serial) {
        return {[serial] { SoftwareDevices::unplug(serial); },
                [serial] {
                    const auto plugged = SoftwareDevices::pluggedDevices();
                    if (std::find(plugged.begin(), plugged.end(), serial) == plugged.end()) {
                        SoftwareDevices::replug(serial);
                    }
                }};
    }

    Plug simulatedPlug() {
        return {[this] { describeCameras(kNoCameras); }, [this] { describeCameras(kSimulatedCamera); }};
    }

    /// Expects that every answer in this number of states is as documented.
    static void expectConforming(const std::string& serialNumber, const Plug& plug, Kind kind, std::size_t states) {
        Subject subject(serialNumber, plug, FlashWrites::Allowed);
        EXPECT_EQ(subject.kind(), kind);
        const std::vector<Finding> findings = examine(subject, [] {});
        std::vector<State> seen;
        for (const Finding& finding : findings) {
            seen.push_back(finding.state);
            EXPECT_TRUE(finding.conforms) << describe(finding);
        }
        seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
        EXPECT_EQ(seen.size(), states);
        std::printf("%s: %zu answers in %zu states\n", nameOf(kind), findings.size(), seen.size());
    }

    static std::string describe(const Finding& finding) {
        return std::string(finding.call->name) + ", " + allStates()[static_cast<std::size_t>(finding.state)].name +
               ": expected " + finding.expected + ", got " + finding.answer;
    }
};

TEST_F(ConformanceTest, EveryKindOfSdkCameraAnswersAsDocumentedInEveryState) {
    for (const std::size_t device : {0, 1, 2}) {
        const std::uint32_t serial = SoftwareDevices::plug(smallDevice(device));
        expectConforming(std::to_string(serial), plugOf(serial), Kind::Sdk, 11);
    }
    const std::uint32_t bare = SoftwareDevices::plug(SoftwareDevices::bareDevice());
    expectConforming(std::to_string(bare), plugOf(bare), Kind::SdkWithoutStream, 7);
}

TEST_F(ConformanceTest, AUsb3VisionCameraAnswersAsDocumentedInEveryState) {
    const DeviceDescription device = smallDevice(0);
    openUsb3Vision(device);
    expectConforming(std::to_string(device.serial), plugOf(device.serial), Kind::Usb3Vision, 7);
}

TEST_F(ConformanceTest, ASimulatedCameraAnswersAsDocumentedInEveryState) {
    expectConforming(kSimulatedSerial, simulatedPlug(), Kind::Simulated, 7);
}

TEST_F(ConformanceTest, FindsTheOneCallThatFails) {
    const std::uint32_t serial = SoftwareDevices::plug(smallDevice(1));
    Subject subject(std::to_string(serial), {}, FlashWrites::Forbidden);
    SoftwareDevices::failNext(serial, Operation::sdkReadFlash, 1, SoftwareDevices::kInternalError);
    std::vector<std::string> failures;
    for (const Finding& finding : examine(subject, [] {})) {
        if (!finding.conforms) {
            failures.push_back(describe(finding));
        }
    }
    EXPECT_EQ(failures,
              std::vector<std::string>{"perform Read Flash 0 16, connected: expected ok, got FunctionExecution"});
}

} // namespace
