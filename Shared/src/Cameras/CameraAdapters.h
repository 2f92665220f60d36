// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"

namespace CameraInterface {

/// Finds cameras of one kind.
struct CameraAdapter {
    std::string name;
    /// Creates a disconnected object for each attached camera.
    std::function<std::vector<std::unique_ptr<Camera>>()> getListOfCameras;
    /// Ends the adapter's threads until the next enumeration; empty if it has none. At the exit of the process it also
    /// waits for those that still close a camera that is gone.
    std::function<void(bool atExit)> rest = {};
};

/// The adapters, in the order of enumeration: of two cameras with the same serial number the first is listed.
std::vector<CameraAdapter> getCameraAdapters();

} // namespace CameraInterface
