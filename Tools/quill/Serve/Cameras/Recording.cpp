// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Recording.h"

#include <exception>

#include <fmt/format.h>

#include "Camera/Region.h"
#include "Serve/Cameras/Refusal.h"

namespace QuillTool::Serve {

using CameraInterface::FrameQueueStatus;

Recording::Recording(KnownCamera& camera, std::size_t capacity, bool mayStart)
    : m_Camera(camera), m_Queue(open(capacity, mayStart)) {}

CameraInterface::FrameQueue Recording::open(std::size_t capacity, bool mayStart) {
    return m_Camera.useConnected([&](const SelectedCamera& selected) {
        const bool isStreaming = selected->isStreaming();
        if (!isStreaming && !mayStart) {
            throw Refusal(403, "ViewOnly", selected.about("its stream does not run, and may not be started"),
                          "Wait until somebody starts the stream.");
        }
        m_ModelName = selected->getModelName();
        auto queue = selected->openFrameQueue({capacity, CameraInterface::WhenFull::DropOldest, "recording"});
        if (!isStreaming) {
            attemptStart(selected, "it cannot stream", [&] { selected->startStream(); });
            m_Camera.isStreamWanted = false; // of a run that has ended
            m_Camera.isStreamOfRecordings = true;
        }
        ++m_Camera.recordings;
        return queue;
    });
}

Recording::~Recording() {
    --m_Camera.recordings;
    try {
        m_Camera.useConnected([&](const SelectedCamera& selected) {
            const bool isLast = m_Camera.recordings == 0;
            if (isLast && m_Camera.isStreamOfRecordings.exchange(false) && !m_Camera.isStreamWanted) {
                selected->stopStream();
            }
        });
    } catch (const std::exception&) {
        // It has left, or was disconnected.
    }
}

CameraInterface::Frame Recording::next(std::chrono::nanoseconds limit) {
    CameraInterface::FrameResult result = m_Queue.pop(limit);
    if (result) {
        return std::move(result.frame);
    }
    const int status = result.status == FrameQueueStatus::TimedOut     ? 504
                       : result.status == FrameQueueStatus::CameraGone ? 410
                                                                       : 409;
    throw Refusal(status, "NoFrame",
                  fmt::format("camera {}: no frame came: {}", m_Camera.serialNumber(), describe(result.status)),
                  "Look at the trigger and the exposure, then try again.");
}

} // namespace QuillTool::Serve
