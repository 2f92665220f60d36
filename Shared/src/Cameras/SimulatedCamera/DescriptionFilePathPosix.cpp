// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/DescriptionFile.h"

namespace CameraInterface::SimulatedAdapter {

std::string getDescriptionFilePath() {
    return QUILL_CAMERA_LIST_FILE;
}

} // namespace CameraInterface::SimulatedAdapter
