// SPDX-License-Identifier: Apache-2.0

#include "Camera/FrameSource.h"

#include <stdexcept>

namespace QuillTool {

using CameraInterface::FrameQueueStatus;
using CameraInterface::FrameResult;

FrameSource::FrameSource(const Interrupt& interrupt, const SelectedCamera& camera,
                         const CameraInterface::FrameQueueSettings& settings)
    : m_Interrupt(interrupt), m_Camera(camera),
      m_Queue(camera.attempt("it cannot stream", [&] { return camera->openFrameQueue(settings); })),
      m_Closer([this] { closeWhenInterrupted(); }) {}

FrameSource::~FrameSource() {
    m_End.wake();
    m_Closer.join();
}

FrameResult FrameSource::next(std::chrono::nanoseconds limit) {
    FrameResult result = m_Queue.pop(limit);
    switch (result.status) {
    case FrameQueueStatus::Frame:
    case FrameQueueStatus::TimedOut:
    case FrameQueueStatus::Closed:
        return result;
    default:
        const FrameQueueStatus reason =
            result.status == FrameQueueStatus::CameraGone ? FrameQueueStatus::Stopped : result.status;
        throw m_Camera.explain("no frame can be captured", std::runtime_error(CameraInterface::describe(reason)));
    }
}

void FrameSource::closeWhenInterrupted() {
    waitForAny({&m_End, &m_Interrupt.waker()});
    m_Queue.close();
}

} // namespace QuillTool
