// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CameraAdapters.h"

#include "Cameras/GenICam/GenICamLibrary.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"

namespace CameraInterface {

std::vector<CameraAdapter> getCameraAdapters() {
    return {
        {"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras, {}},
        {"USB3 Vision cameras", Usb3VisionAdapter::Usb3VisionCamera::getListOfCameras, {}},
        {"simulated cameras (" + SimulatedAdapter::getDescriptionFilePath() + ")",
         SimulatedAdapter::SimulatedCamera::getListOfCameras,
         {}},
        {"GenICam cameras", GenICam::getListOfCameras, GenICam::rest},
    };
}

} // namespace CameraInterface
