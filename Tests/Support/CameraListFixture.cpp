// SPDX-License-Identifier: Apache-2.0

#include "Support/CameraListFixture.h"

#include <filesystem>
#include <utility>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"

namespace TestSupport {

namespace {

using namespace CameraInterface;

std::string& cameraListPath() {
    static std::string path = "/nonexistent/TestCameraList.json";
    return path;
}

std::vector<CameraAdapter>& adapters() {
    static std::vector<CameraAdapter> adapters;
    return adapters;
}

} // namespace

CameraListFixture::CameraListFixture() {
    cameraListPath() = m_Folder.file("TestCameraList.json");
    SimulatedAdapter::IdentificationCache::instance().forget();
    useAdapters({simulatedAdapter()});
}

CameraListFixture::~CameraListFixture() {
    Camera::unitialisedWorkpace();
}

void CameraListFixture::describeCameras(const std::string& json) {
    m_Folder.write("TestCameraList.json", json);
    SimulatedAdapter::IdentificationCache::instance().forget();
}

void CameraListFixture::removeCameraList() {
    std::filesystem::remove(cameraListPath());
    SimulatedAdapter::IdentificationCache::instance().forget();
}

void CameraListFixture::useAdapters(std::vector<CameraAdapter> chosen) {
    Camera::unitialisedWorkpace();
    adapters() = std::move(chosen);
}

CameraAdapter CameraListFixture::simulatedAdapter() {
    return {"simulated cameras", SimulatedAdapter::SimulatedCamera::getListOfCameras};
}

} // namespace TestSupport

// Replaces definitions of library files that are not linked here.

namespace CameraInterface {

std::vector<CameraAdapter> getCameraAdapters() {
    return TestSupport::adapters();
}

std::string SimulatedAdapter::getDescriptionFilePath() {
    return TestSupport::cameraListPath();
}

} // namespace CameraInterface
