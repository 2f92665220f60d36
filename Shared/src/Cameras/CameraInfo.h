// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "Cameras/Camera.h"

namespace CameraInterface {

/// The values of the descriptive properties that a camera has, by name. A property that cannot be read is left out.
std::map<std::string, std::string> collectCameraInfo(Camera& camera);

} // namespace CameraInterface
