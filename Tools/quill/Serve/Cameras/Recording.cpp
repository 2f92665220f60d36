// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Recording.h"

#include <algorithm>
#include <exception>

#include <fmt/format.h>

#include "Camera/Region.h"
#include "Serve/Cameras/Refusal.h"

namespace QuillTool::Serve {

using CameraInterface::FrameQueueStatus;

namespace {

constexpr std::chrono::milliseconds kUntilEndIsSeen{100};

} // namespace

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

CameraInterface::Frame Recording::next(std::chrono::nanoseconds limit, const std::atomic<bool>& isEnding) {
    const auto end = std::chrono::steady_clock::now() + limit;
    CameraInterface::FrameResult result;
    do {
        if (isEnding) {
            throw Refusal(503, "Ending", fmt::format("camera {}: the server ends", m_Camera.serialNumber()));
        }
        result = m_Queue.pop(std::min<std::chrono::nanoseconds>(limit, kUntilEndIsSeen));
        if (result) {
            return std::move(result.frame);
        }
    } while (result.status == FrameQueueStatus::TimedOut && std::chrono::steady_clock::now() < end);
    const int status = result.status == FrameQueueStatus::TimedOut     ? 504
                       : result.status == FrameQueueStatus::CameraGone ? 410
                                                                       : 409;
    throw Refusal(status, "NoFrame",
                  fmt::format("camera {}: no frame came: {}", m_Camera.serialNumber(), describe(result.status)),
                  "Look at the trigger and the exposure, then try again.");
}

} // namespace QuillTool::Serve
