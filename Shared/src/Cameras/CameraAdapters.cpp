#include "Cameras/CameraAdapters.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Cameras/SimulatedCamera/CameraListFile.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"

namespace CameraInterface {

std::vector<CameraAdapter> getCameraAdapters() {
    return {
        {"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras},
        {"simulated cameras (" + SimulatedAdapter::getCameraListPath() + ")",
         SimulatedAdapter::SimulatedCamera::getListOfCameras},
    };
}

} // namespace CameraInterface
