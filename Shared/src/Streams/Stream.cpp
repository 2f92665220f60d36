// SPDX-License-Identifier: Apache-2.0

#include "Streams/Stream.h"

namespace CameraInterface {

Stream::~Stream() = default;

void Stream::forceStop() noexcept {
    try {
        stopStream();
    } catch (...) {
        // A device that is gone may refuse to stop.
    }
}

} // namespace CameraInterface
