// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "Cameras/Camera.h"
#include "Reliability/Storm/Tally.h"

namespace Storm {

/// Something that an application does with a camera, as far as it is not refused.
struct CameraStep {
    void (*take)(CameraInterface::Camera& camera, Random& random);
    bool restarts; ///< the camera, which leaves the bus for that
};

/// Those that are taken more often stand there more often.
extern const std::array<CameraStep, 8> kCameraSteps;

} // namespace Storm
