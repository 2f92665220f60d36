#pragma once

#include <Quill.h>

namespace QuillTool {

/// What reaches a camera.
enum class CameraKind { Sdk, Usb3Vision, Simulated };

/// Asks a connected camera. Where it has no stream, an image tells a simulated camera, which gives its placeholder at
/// once, from one in USB3 Vision mode, which gives none.
CameraKind kindOf(CameraInterface::Camera& camera);

/// "an SDK camera"
const char* nameOf(CameraKind kind);

/// What the image of a simulated camera is.
constexpr const char* kPlaceholder = "a placeholder of one black pixel";

} // namespace QuillTool
