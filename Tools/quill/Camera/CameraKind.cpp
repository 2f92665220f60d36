// SPDX-License-Identifier: Apache-2.0

#include "Camera/CameraKind.h"

#include <array>
#include <exception>

namespace QuillTool {

namespace {

/// @return whether the action succeeds
template <typename Action>
bool does(Action action) {
    try {
        action();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

CameraKind kindOf(CameraInterface::Camera& camera) {
    if (does([&] { camera.getStreamStatistics(); })) {
        return CameraKind::Sdk;
    }
    return does([&] { camera.getImage(); }) ? CameraKind::Simulated : CameraKind::Usb3Vision;
}

const char* nameOf(CameraKind kind) {
    constexpr std::array kNames{"an SDK camera", "a USB3 Vision camera", "a simulated camera"};
    return kNames.at(static_cast<std::size_t>(kind));
}

} // namespace QuillTool
