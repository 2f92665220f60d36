// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <map>

#include <SoftwareDevices.h>

#include "Base/SharedLibrary.h"
#include "Cameras/CameraAdapters.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "DriverKit/RegistryFile.h"

// Simulated cameras that arrive and depart as their list file changes, and a device in software; environment variables
// name both.

namespace {

using namespace SoftwareDevices;

std::string environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// A device with small pictures, which arrive in time on any load.
DeviceDescription smallDevice() {
    DeviceDescription device = defaultDevices()[1];
    device.sensorWidth = 64;
    device.sensorHeight = 48;
    return device;
}

std::uint32_t plugGige() {
    DeviceDescription device = gigeDevice();
    device.interfaceNumber = 2; // an interface that is searched for cameras
    return plug(device);
}

/// By the name in the environment.
const std::map<std::string, void (*)()> kDevices{
    {"gige", [] { plugGige(); }},
    {"uncounted", [] { failNext(plugGige(), Operation::sdkGetStreamStats, 1'000'000'000, kInternalError); }},
    {"orange",
     [] {
         DeviceDescription device = defaultDevices()[0];
         device.noise = 0;
         presentScene(plug(device), {2, 2, {250, 150, 50, 250, 150, 50, 250, 150, 50, 250, 150, 50}});
     }},
    {"slow",
     [] {
         DeviceDescription device = smallDevice();
         device.frameRates = {0.7F};
         plug(device);
     }},
    {"silent", [] { dropFrames(plug(smallDevice()), 1'000'000'000); }},
    {"worn", [] { failNext(plug(smallDevice()), Operation::sdkReadFlash, 1'000'000'000, kInternalError); }},
    {"pulled", [] { unplugDuring(plug(defaultDevices()[0]), Operation::sdkRegisterWrite, 20); }},
    {"leaving", [] { unplugDuring(plug(smallDevice()), Operation::sdkCaptureVideoFrames, 2); }},
};

/// The record of driver kits is in the file that the environment names.
const Utilities::RegistryApi kRegistry{
    [](Utilities::RegistryHandle /*root*/, const char16_t* path, std::uint32_t /*options*/, std::uint32_t /*access*/,
       Utilities::RegistryHandle* key) {
        return Utilities::openStoredKey(environmentValue("QUILL_TEST_DRIVERS"), path, key);
    },
    Utilities::getStoredValue, Utilities::closeStoredKey};
[[maybe_unused]] const bool kRegistryInUse = (Utilities::useRegistryApi(&kRegistry), true);

bool plugDevice() {
    startEmpty();
    const auto device = kDevices.find(environmentValue("QUILL_TEST_DEVICE"));
    if (device != kDevices.end()) {
        device->second();
    }
    return device != kDevices.end();
}

} // namespace

namespace CameraInterface {

std::string SimulatedAdapter::getDescriptionFilePath() {
    return environmentValue("QUILL_TEST_CAMERA_LIST");
}

std::vector<CameraAdapter> getCameraAdapters() {
    static const bool hasDevice = plugDevice();
    std::vector<CameraAdapter> adapters{{"simulated cameras (" + SimulatedAdapter::getDescriptionFilePath() + ")", [] {
                                             SimulatedAdapter::IdentificationCache::instance().forget();
                                             return SimulatedAdapter::SimulatedCamera::getListOfCameras();
                                         }}};
    if (hasDevice) {
        adapters.push_back({"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras});
    }
    return adapters;
}

} // namespace CameraInterface

std::string Base::getLibraryFolder() {
    return QUILL_TEST_LIBRARY_FOLDER;
}
