// SPDX-License-Identifier: Apache-2.0

#include "Cameras/GenICam/GenICamLibrary.h"

namespace CameraInterface::GenICam {

// The adapter is not built for Windows: there is nothing to load for a device.
bool isUsb3VisionDeviceAttached() {
    return false;
}

} // namespace CameraInterface::GenICam
