#include "Cameras/SimulatedCamera/CameraListFile.h"

namespace CameraInterface::SimulatedAdapter {

std::string getCameraListPath() {
    return QUILL_CAMERA_LIST_FILE;
}

} // namespace CameraInterface::SimulatedAdapter
