#include <cstdlib>

#include "Cameras/CameraAdapters.h"
#include "Cameras/SimulatedCamera/CameraListFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Internal/SharedLibrary.h"

// Simulated cameras that arrive and depart as the list changes that the environment names.

namespace CameraInterface {

std::string SimulatedAdapter::getCameraListPath() {
    const char* path = std::getenv("QUILL_TEST_CAMERA_LIST");
    return path == nullptr ? "" : path;
}

std::vector<CameraAdapter> getCameraAdapters() {
    return {{"simulated cameras (" + SimulatedAdapter::getCameraListPath() + ")", [] {
                 SimulatedAdapter::IdentificationCache::instance().forget();
                 return SimulatedAdapter::SimulatedCamera::getListOfCameras();
             }}};
}

} // namespace CameraInterface

std::string Internal::getLibraryFolder() {
    return {};
}
