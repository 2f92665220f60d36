// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "Cameras/Camera.h"
#include "Reliability/Storm/Tally.h"

namespace Storm {

/// An action of an application on a camera, which may be refused.
struct CameraStep {
    void (*take)(CameraInterface::Camera& camera, Random& random);
    bool restarts; ///< the camera leaves the bus and restarts
};

/// The table repeats steps that are taken more often.
extern const std::array<CameraStep, 9> kCameraSteps;

} // namespace Storm
