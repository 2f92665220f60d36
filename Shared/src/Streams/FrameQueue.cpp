// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameQueue.h"

#include <utility>

#include "Streams/FrameQueueState.h"

namespace CameraInterface {

const char* describe(FrameQueueStatus status) {
    switch (status) {
    case FrameQueueStatus::Frame:
        return "A frame is there.";
    case FrameQueueStatus::TimedOut:
        return "No frame arrived in time.";
    case FrameQueueStatus::Stopped:
        return "The stream does not run.";
    case FrameQueueStatus::RunEnded:
        return "The camera's capture ended.";
    case FrameQueueStatus::OutOfMemory:
        return "There was not enough memory for the next frame.";
    case FrameQueueStatus::Suspended:
        return "The camera is suspended.";
    case FrameQueueStatus::CameraGone:
        return "The camera is gone.";
    case FrameQueueStatus::Closed:
        return "The queue was closed.";
    }
    return "";
}

FrameQueue::FrameQueue(std::shared_ptr<FrameQueueState> state) : m_State(std::move(state)) {}

FrameQueue::FrameQueue(FrameQueue&& other) noexcept = default;

FrameQueue& FrameQueue::operator=(FrameQueue&& other) noexcept {
    FrameQueue closed(std::move(other));
    m_State.swap(closed.m_State);
    return *this;
}

FrameQueue::~FrameQueue() {
    if (m_State && m_State->isOfThisProcess()) {
        m_State->close();
    }
}

FrameResult FrameQueue::pop() {
    return m_State->pop(std::chrono::nanoseconds::max());
}

FrameResult FrameQueue::pop(std::chrono::nanoseconds limit) {
    return m_State->pop(limit);
}

FrameResult FrameQueue::tryPop() {
    return m_State->pop(std::chrono::nanoseconds(0));
}

FrameQueueStatus FrameQueue::waitForRun() {
    return m_State->waitForRun(std::chrono::nanoseconds::max());
}

FrameQueueStatus FrameQueue::waitForRun(std::chrono::nanoseconds limit) {
    return m_State->waitForRun(limit);
}

void FrameQueue::close() {
    m_State->close();
}

std::size_t FrameQueue::size() const {
    return m_State->size();
}

std::size_t FrameQueue::capacity() const {
    return m_State->capacity();
}

std::vector<StreamCounter> FrameQueue::getCounters() const {
    return m_State->counters();
}

} // namespace CameraInterface
