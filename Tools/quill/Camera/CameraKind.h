// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Quill.h>

namespace QuillTool {

/// What reaches a camera.
enum class CameraKind { Sdk, Usb3Vision, Simulated };

/// Asks a connected camera. Of those without a stream, a simulated camera gives its placeholder image at once; one in
/// USB3 Vision mode gives none.
CameraKind kindOf(CameraInterface::Camera& camera);

/// "an SDK camera"
const char* nameOf(CameraKind kind);

/// What the image of a simulated camera is.
constexpr const char* kPlaceholder = "a placeholder of one black pixel";

} // namespace QuillTool
