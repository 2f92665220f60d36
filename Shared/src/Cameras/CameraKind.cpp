// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CameraKind.h"

namespace CameraInterface {

const char* getKindName(CameraKind kind) {
    switch (kind) {
    case CameraKind::SdkDevice:
        return "SDK device";
    case CameraKind::SoftwareDevice:
        return "software device";
    case CameraKind::Simulated:
        return "simulated";
    case CameraKind::Usb3Vision:
        return "USB3 Vision";
    case CameraKind::GenICam:
        return "GenICam";
    case CameraKind::Unknown:
        break;
    }
    return "unknown";
}

} // namespace CameraInterface
