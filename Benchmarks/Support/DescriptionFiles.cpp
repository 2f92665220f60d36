// SPDX-License-Identifier: Apache-2.0

#include "Support/DescriptionFiles.h"

#include <filesystem>
#include <fstream>
#include <map>

#include <nlohmann/json.hpp>

#include "Cameras/CameraAdapters.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"
#include "Support/TemporaryFolder.h"

namespace Benchmarks {

namespace {

using namespace CameraInterface;
using nlohmann::json;

constexpr int kPropertiesPerCamera = 4;

json describeCamera(int number) {
    json properties = json::array();
    for (int i = 0; i < kPropertiesPerCamera; ++i) {
        properties.push_back({{"Name", "Property " + std::to_string(i)},
                              {"Type", "Integer"},
                              {"Minimum", "0"},
                              {"Maximum", "1023"},
                              {"Default", "100"},
                              {"ReadOnly", false},
                              {"AvailableForWriting", true},
                              {"Discrete", false},
                              {"ValueList", json::array()}});
    }
    const json functions = json::array({{{"Name", "Reboot"},
                                         {"Parameters", json::array({{{"Type", "String"}, {"Label", "Boot Mode"}}})},
                                         {"Return Format", json::array()}}});
    return {{"Identification",
             {{"Model Name", "Simulated " + std::to_string(number % 8)},
              {"Serial Number", "S" + std::to_string(100000 + number)}}},
            {"Properties", properties},
            {"Functions", functions}};
}

std::string& chosenList() {
    static std::string path;
    return path;
}

int& listedCameras() {
    static int cameras = 0;
    return cameras;
}

bool& devicesAreCameras() {
    static bool use = false;
    return use;
}

} // namespace

void useDevices(bool use) {
    devicesAreCameras() = use;
}

std::string cameraListFile(int cameras) {
    static const TestSupport::TemporaryFolder folder;
    std::string path = folder.path() / (std::to_string(cameras) + ".json");
    if (!std::filesystem::exists(path)) {
        json list = json::array();
        for (int number = 0; number < cameras; ++number) {
            list.push_back(describeCamera(number));
        }
        std::ofstream(path) << json{{"Cameras", list}}.dump(2);
    }
    return path;
}

void useCameraList(int cameras) {
    chosenList() = cameraListFile(cameras);
    SimulatedAdapter::IdentificationCache::instance().forget();
}

void endList() {
    Camera::unitialisedWorkpace();
    listedCameras() = 0;
}

void listCameras(int cameras) {
    if (listedCameras() != cameras) {
        endList();
        useCameraList(cameras);
        listedCameras() = static_cast<int>(Camera::searchForNewCameras());
    }
}

namespace {

int checkPrivately();

/// Gives access to the check, which is private to the camera class: an explicit instantiation may name it.
template <auto Check>
struct DisconnectCheck {
    friend int checkPrivately() { return Check(); }
};
template struct DisconnectCheck<&Camera::removeInactiveCamerasFromList>;

} // namespace

int checkForDisconnectedCameras() {
    return checkPrivately();
}

} // namespace Benchmarks

// Replaces definitions of library files that are not linked here.

namespace CameraInterface {

std::vector<CameraAdapter> getCameraAdapters() {
    std::vector<CameraAdapter> adapters;
    if (Benchmarks::devicesAreCameras()) {
        adapters.push_back({"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras});
        adapters.push_back({"USB3 Vision cameras", Usb3VisionAdapter::Usb3VisionCamera::getListOfCameras});
    }
    adapters.push_back({"simulated cameras", SimulatedAdapter::SimulatedCamera::getListOfCameras});
    return adapters;
}

std::string SimulatedAdapter::getDescriptionFilePath() {
    return Benchmarks::chosenList();
}

} // namespace CameraInterface
