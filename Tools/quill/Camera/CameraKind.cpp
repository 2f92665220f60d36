// SPDX-License-Identifier: Apache-2.0

#include "Camera/CameraKind.h"

#include <array>

namespace QuillTool {

CameraKind kindOf(const CameraInterface::Camera& camera) {
    switch (camera.getKind()) {
    case CameraInterface::CameraKind::Simulated:
        return CameraKind::Simulated;
    case CameraInterface::CameraKind::Usb3Vision:
        return CameraKind::Usb3Vision;
    case CameraInterface::CameraKind::GenICam:
        return CameraKind::GenICam;
    default:
        return CameraKind::Sdk;
    }
}

const char* nameOf(CameraKind kind) {
    constexpr std::array kNames{"an SDK camera", "a USB3 Vision camera", "a simulated camera", "a GenICam camera"};
    return kNames.at(static_cast<std::size_t>(kind));
}

} // namespace QuillTool
