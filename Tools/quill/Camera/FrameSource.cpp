// SPDX-License-Identifier: Apache-2.0

#include "Camera/FrameSource.h"

#include <array>
#include <stdexcept>

#include <poll.h>

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
    std::array<pollfd, 2> waiting{pollfd{m_End.descriptor(), POLLIN, 0}, pollfd{m_Interrupt.descriptor(), POLLIN, 0}};
    while (poll(waiting.data(), waiting.size(), -1) <= 0) {
    }
    m_Queue.close();
}

} // namespace QuillTool
