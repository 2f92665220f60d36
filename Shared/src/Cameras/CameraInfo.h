// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "Cameras/Camera.h"

namespace CameraInterface {

/// The values of the descriptive properties of a camera, by name. Omits properties that cannot be read.
QUILL_ADAPTER_API std::map<std::string, std::string> collectCameraInfo(Camera& camera);

} // namespace CameraInterface
