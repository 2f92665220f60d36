// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameQueueState.h"

#include <utility>

#include "Process/Process.h"

namespace CameraInterface {

using Utilities::MutexLock;
using Clock = std::chrono::steady_clock;

namespace {

/// Longer waits than a century are waits without a limit, which the clock need not count.
constexpr std::chrono::hours kLongest{24 * 365 * 100};

} // namespace

FrameQueueState::FrameQueueState(const FrameQueueSettings& settings, std::optional<FrameQueueStatus> end,
                                 std::shared_ptr<const FrameCounts> counts)
    : m_Settings(settings), m_Process(Process::number()), m_Counts(std::move(counts)),
      m_LossesBefore(m_Counts->presentLosses()), m_Frames(settings.capacity), m_End(end) {}

bool FrameQueueState::push(const Frame& frame) {
    if (frame.information.arrival < m_Opened) {
        return false;
    }
    Frame dropped; // destroyed after the mutex is released
    {
        MutexLock lock(m_Mutex);
        if (m_Settings.whenFull == WhenFull::HoldBack) {
            const auto passes = [&]() QUILL_REQUIRES(m_Mutex) {
                return !isFull() || m_Closed || m_LetPassRun >= frame.information.run;
            };
            lock.wait(m_Space, passes);
        }
        if (m_Closed || m_End == FrameQueueStatus::CameraGone) {
            return false;
        }
        ++m_Arrived;
        if (isFull()) {
            ++m_Dropped;
            if (m_Settings.whenFull != WhenFull::DropOldest) {
                return false;
            }
            dropped = takeOldest();
        }
        m_Frames[(m_Oldest + m_Waiting) % m_Settings.capacity] = frame;
        ++m_Waiting;
    }
    m_Changed.notify_one();
    return true;
}

Frame FrameQueueState::takeOldest() {
    Frame frame = std::move(m_Frames[m_Oldest]);
    m_Frames[m_Oldest] = {};
    m_Oldest = (m_Oldest + 1) % m_Settings.capacity;
    --m_Waiting;
    return frame;
}

void FrameQueueState::letPass(std::uint64_t run) {
    {
        const MutexLock lock(m_Mutex);
        m_LetPassRun = run;
    }
    m_Space.notify_all();
}

void FrameQueueState::setEnd(std::optional<FrameQueueStatus> end) {
    {
        const MutexLock lock(m_Mutex);
        m_End = end;
    }
    m_Changed.notify_all();
}

template <typename Predicate>
void FrameQueueState::waitWithin(MutexLock& lock, std::chrono::nanoseconds limit, Predicate isAnswered) {
    if (limit > kLongest) {
        lock.wait(m_Changed, isAnswered);
    } else if (limit.count() > 0) {
        lock.waitUntil(m_Changed, Clock::now() + limit, isAnswered);
    }
}

FrameResult FrameQueueState::pop(std::chrono::nanoseconds limit) {
    FrameResult result;
    {
        MutexLock lock(m_Mutex);
        const auto isAnswered = [this]() QUILL_REQUIRES(m_Mutex) { return m_Waiting != 0 || m_End || m_Closed; };
        waitWithin(lock, limit, isAnswered);
        if (m_Waiting == 0) {
            result.status = m_Closed ? FrameQueueStatus::Closed : m_End.value_or(FrameQueueStatus::TimedOut);
            return result;
        }
        result.status = FrameQueueStatus::Frame;
        result.frame = takeOldest();
        ++m_Delivered;
    }
    if (m_Settings.whenFull == WhenFull::HoldBack) {
        m_Space.notify_one();
    }
    return result;
}

FrameQueueStatus FrameQueueState::waitForRun(std::chrono::nanoseconds limit) {
    MutexLock lock(m_Mutex);
    const auto isGone = [this]() QUILL_REQUIRES(m_Mutex) { return m_End == FrameQueueStatus::CameraGone; };
    const auto isAnswered = [&]() QUILL_REQUIRES(m_Mutex) { return m_Waiting != 0 || !m_End || m_Closed || isGone(); };
    waitWithin(lock, limit, isAnswered);
    if (m_Closed) {
        return FrameQueueStatus::Closed;
    }
    if (m_Waiting != 0 || !m_End) {
        return FrameQueueStatus::Frame;
    }
    return isGone() ? FrameQueueStatus::CameraGone : FrameQueueStatus::TimedOut;
}

void FrameQueueState::close() {
    std::vector<Frame> dropped; // destroyed after the mutex is released
    {
        const MutexLock lock(m_Mutex);
        m_Closed = true;
        dropped.swap(m_Frames);
        m_Dropped += std::exchange(m_Waiting, 0);
    }
    m_Changed.notify_all();
    m_Space.notify_all();
}

std::size_t FrameQueueState::size() const {
    const MutexLock lock(m_Mutex);
    return m_Waiting;
}

std::uint64_t FrameQueueState::dropped() const {
    const MutexLock lock(m_Mutex);
    return m_Dropped;
}

std::vector<StreamCounter> FrameQueueState::counters() const {
    FrameCounts::Losses losses = m_Counts->presentLosses();
    std::uint64_t lost = 0;
    for (std::size_t i = 0; i < losses.size(); ++i) {
        losses[i] -= m_LossesBefore[i];
        lost += losses[i];
    }
    std::vector<StreamCounter> counters;
    {
        const MutexLock lock(m_Mutex);
        counters = {
            {"Captured", m_Arrived + lost, "Frames captured since the queue was opened: the sum of all following."},
            {"Delivered", m_Delivered, "Frames that were popped."},
            {"Waiting", m_Waiting, "Frames that wait to be popped; this is no total."},
            {"Dropped", m_Dropped, "Frames that the queue dropped: it was full, or was closed.", true},
        };
    }
    m_Counts->appendLosses(counters, losses);
    return counters;
}

bool FrameQueueState::isOfThisProcess() const {
    return m_Process == Process::number();
}

} // namespace CameraInterface
