// SPDX-License-Identifier: Apache-2.0

#include <csignal>
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
#include "OrvexApi/OrvexApi.h"

// Simulated cameras that arrive and depart as their list file changes, and a device in software; environment variables
// name both.

namespace {

using namespace SoftwareDevices;
using OrvexAdapter::OrvexApi;
using OrvexAdapter::orvexApi;
using OrvexAdapter::useOrvexApi;

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

/// Presses Ctrl-C at a call of an operation of the SDK.
template <auto operation, typename... Arguments>
void interruptAt(int call, std::uint32_t (*OrvexApi::* /*operation*/)(Arguments...)) {
    static const OrvexApi original = orvexApi();
    static OrvexApi api = original;
    static int callsLeft = call;
    api.*operation = [](Arguments... arguments) {
        if (--callsLeft == 0) {
            std::raise(SIGINT);
        }
        return (original.*operation)(arguments...);
    };
    useOrvexApi(&api);
}

template <auto operation>
void plugInterrupted(int call, const DeviceDescription& device = defaultDevices()[0]) {
    plug(device);
    interruptAt<operation>(call, operation);
}

void plugPulled(Operation operation, std::uint32_t call) {
    unplugDuring(plug(defaultDevices()[0]), operation, call);
}

/// By what the environment calls it.
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
    {"pulled", [] { plugPulled(Operation::sdkRegisterWrite, 20); }},
    {"pulled at erase 1", [] { plugPulled(Operation::sdkEraseFlash, 1); }},
    {"pulled at write 1", [] { plugPulled(Operation::sdkWriteFlash, 1); }},
    {"pulled at write 3", [] { plugPulled(Operation::sdkWriteFlash, 3); }},
    {"pulled at read 2", [] { plugPulled(Operation::sdkReadFlash, 2); }},
    {"interrupted at erase 1", [] { plugInterrupted<&OrvexApi::sdkEraseFlash>(1); }},
    {"interrupted at write 2", [] { plugInterrupted<&OrvexApi::sdkWriteFlash>(2); }},
    {"interrupted at write 3", [] { plugInterrupted<&OrvexApi::sdkWriteFlash>(3); }},
    {"unerasable",
     [] {
         plug(defaultDevices()[0]);
         static OrvexApi api = orvexApi();
         api.sdkEraseFlash = [](void*, std::uint32_t, std::uint32_t) { return std::uint32_t{1}; };
         useOrvexApi(&api);
     }},
    {"dark", // the first frame takes a quarter of an hour
     [] {
         DeviceDescription device = smallDevice();
         device.properties.push_back({20, 1e6F, 0, 1e6F, 10});
         plugInterrupted<&OrvexApi::sdkCaptureVideoFrames>(1, device);
     }},
    {"small", [] { plug(smallDevice()); }},
    {"leaving later", [] { unplugDuring(plug(smallDevice()), Operation::sdkCaptureVideoFrames, 50); }},
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
