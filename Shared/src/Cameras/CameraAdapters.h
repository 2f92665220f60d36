// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"

namespace CameraInterface {

/// What finds cameras of one kind.
struct CameraAdapter {
    std::string m_Name;
    /// Makes a new, disconnected object for each camera that is there.
    std::function<std::vector<std::unique_ptr<Camera>>()> m_GetListOfCameras;
};

/// The adapters, in the order in which they are asked: of two cameras with one serial number the first is listed.
std::vector<CameraAdapter> getCameraAdapters();

} // namespace CameraInterface
