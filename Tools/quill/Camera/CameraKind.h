// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Quill.h>

namespace QuillTool {

/// The interface through which the library reaches a camera.
enum class CameraKind { Sdk, Usb3Vision, Simulated };

/// Determines the kind of a connected camera. Without a stream, a simulated camera returns its placeholder image at
/// once; a camera in USB3 Vision mode returns no image.
CameraKind kindOf(CameraInterface::Camera& camera);

/// Returns the kind with its article: "an SDK camera".
const char* nameOf(CameraKind kind);

/// Describes the image of a simulated camera.
constexpr const char* kPlaceholder = "a placeholder of one black pixel";

} // namespace QuillTool
