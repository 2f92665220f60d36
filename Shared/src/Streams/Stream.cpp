// SPDX-License-Identifier: Apache-2.0

#include "Streams/Stream.h"

#include "Streams/FrameHub.h"

namespace CameraInterface {

Stream::Stream() : m_Frames(std::make_shared<FrameHub>()) {}

Stream::~Stream() {
    m_Frames->retire();
}

void Stream::describeFrames() {}

void Stream::forceStop() noexcept {
    try {
        stopStream();
    } catch (...) {
        // A device that is gone may refuse to stop.
    }
}

} // namespace CameraInterface
