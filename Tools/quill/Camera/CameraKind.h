// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Quill.h>

namespace QuillTool {

/// The interface through which the library reaches a camera. Devices in software have that of SDK cameras.
enum class CameraKind { Sdk, Usb3Vision, Simulated, GenICam };

CameraKind kindOf(const CameraInterface::Camera& camera);

/// Returns the kind with its article: "an SDK camera".
const char* nameOf(CameraKind kind);

/// Describes the image of a simulated camera.
constexpr const char* kPlaceholder = "a placeholder of one black pixel";

} // namespace QuillTool
