// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameHandover.h"

#include <algorithm>
#include <utility>

namespace CameraInterface {

using Utilities::MutexLock;
using Clock = std::chrono::steady_clock;

FrameHandover::Request::Request(FrameHandover& handover) : m_Handover(handover) {
    m_Handover.requestFrame(*this);
}

FrameHandover::Request::~Request() {
    m_Handover.dropRequest(*this);
}

FrameHandover::Outcome FrameHandover::Request::wait(std::chrono::nanoseconds bound) {
    FrameHandover& handover = m_Handover;
    MutexLock lock(handover.m_RequestMutex);
    const auto isAnswered = [&]() QUILL_REQUIRES(handover.m_RequestMutex) { return m_FrameReady || !handover.m_Open; };
    // While others receive frames, the camera delivers: the time starts again, and the queue advances.
    const auto deadline = [&]() QUILL_REQUIRES(handover.m_RequestMutex) {
        return std::max(m_Begin, handover.m_LastDelivery) + bound;
    };
    while (!isAnswered() && Clock::now() < deadline()) {
        lock.waitUntil(handover.m_Answered, deadline(), isAnswered);
    }
    if (m_FrameReady) {
        return Outcome::Frame;
    }
    return handover.m_Open ? Outcome::TimedOut : handover.m_Why;
}

void FrameHandover::close(Outcome why) {
    {
        const MutexLock lock(m_RequestMutex);
        if (!m_Open) {
            return;
        }
        m_Open = false;
        m_Why = why;
    }
    m_Answered.notify_all();
}

bool FrameHandover::deliver(std::vector<unsigned char>&& frame, const FrameGeometry& geometry) {
    {
        const MutexLock lock(m_RequestMutex);
        if (m_Requests.empty()) {
            return false;
        }
        Request& longest = *m_Requests.front();
        m_Requests.erase(m_Requests.begin());
        m_FrameRequested = !m_Requests.empty();
        longest.m_ImageData = std::move(frame);
        longest.m_Geometry = geometry;
        longest.m_FrameReady = true;
        m_LastDelivery = Clock::now();
    }
    m_Answered.notify_all();
    return true;
}

void FrameHandover::requestFrame(Request& request) {
    const MutexLock lock(m_RequestMutex);
    m_Requests.push_back(&request);
    m_FrameRequested = true;
}

void FrameHandover::dropRequest(Request& request) {
    const MutexLock lock(m_RequestMutex);
    m_Requests.erase(std::remove(m_Requests.begin(), m_Requests.end(), &request), m_Requests.end());
    m_FrameRequested = !m_Requests.empty();
}

} // namespace CameraInterface
