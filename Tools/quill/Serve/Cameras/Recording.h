// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <string>

#include <Quill.h>

#include "Serve/Cameras/KnownCamera.h"

namespace QuillTool::Serve {

/// Frames of a camera, of its running stream or of one that runs only for recordings.
class Recording {
public:
    /// @param capacity  frames that wait for whoever takes them; later ones replace the oldest
    /// @throws Refusal  the camera is not connected, or its stream does not run and must not be started
    Recording(KnownCamera& camera, std::size_t capacity, bool mayStart);
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    /// Stops a stream that ran only for recordings, of which this is the last.
    ~Recording();

    /// Waits for the next frame, until @p isEnding.
    /// @throws Refusal  no frame came within @p limit, or the stream or the server has ended
    CameraInterface::Frame next(std::chrono::nanoseconds limit, const std::atomic<bool>& isEnding);
    const std::string& modelName() const { return m_ModelName; }

private:
    CameraInterface::FrameQueue open(std::size_t capacity, bool mayStart);

    KnownCamera& m_Camera;
    std::string m_ModelName;
    CameraInterface::FrameQueue m_Queue;
};

} // namespace QuillTool::Serve
