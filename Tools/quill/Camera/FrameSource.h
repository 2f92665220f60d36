// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <thread>

#include <Quill.h>

#include "Camera/Session.h"
#include "Terminal/Interrupt.h"
#include "Terminal/Waker.h"

namespace QuillTool {

/// Takes every frame of a camera from a queue that it opens. An interrupt ends a wait at once.
class FrameSource {
public:
    /// @throws ToolError  the camera has no stream
    FrameSource(const Interrupt& interrupt, const SelectedCamera& camera,
                const CameraInterface::FrameQueueSettings& settings);
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;
    ~FrameSource();

    /// Waits for a frame, at most for @p limit. The status is Frame, TimedOut, or Closed after an interrupt or close().
    /// @throws ToolError  the stream has ended
    CameraInterface::FrameResult next(std::chrono::nanoseconds limit);
    /// Ends the present and further waits. Thread-safe.
    void close() { m_Queue.close(); }
    const CameraInterface::FrameQueue& queue() const { return m_Queue; }

private:
    void closeWhenInterrupted();

    const Interrupt& m_Interrupt;
    SelectedCamera m_Camera;
    CameraInterface::FrameQueue m_Queue;
    Waker m_End;
    std::thread m_Closer;
};

} // namespace QuillTool
