// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Streams/FrameCounts.h"
#include "Streams/FrameQueue.h"
#include "Utilities/Mutex.h"

namespace CameraInterface {

/// The inside of a FrameQueue, which the queue shares with the stream that fills it. Thread-safe.
class FrameQueueState {
public:
    /// @param end why no run delivers now; nothing while one does
    FrameQueueState(const FrameQueueSettings& settings, std::optional<FrameQueueStatus> end,
                    std::shared_ptr<const FrameCounts> counts);
    FrameQueueState(const FrameQueueState&) = delete;
    FrameQueueState& operator=(const FrameQueueState&) = delete;
    ~FrameQueueState() = default;

    // For the stream.

    /// Adds a frame, as the settings say. With HoldBack it waits for space, until letPass() was called for the frame's
    /// run.
    /// @return whether the queue took the frame; a closed queue takes none
    bool push(const Frame& frame);
    /// Ends the present and further waits for space during a run.
    void letPass(std::uint64_t run);
    void setEnd(std::optional<FrameQueueStatus> end);

    // For the queue; see FrameQueue.

    FrameResult pop(std::chrono::nanoseconds limit);
    FrameQueueStatus waitForRun(std::chrono::nanoseconds limit);
    void close();
    bool isClosed() const { return m_Closed; }
    std::size_t size() const;
    std::size_t capacity() const { return m_Settings.capacity; }
    const FrameQueueSettings& settings() const { return m_Settings; }
    std::uint64_t dropped() const;
    std::vector<StreamCounter> counters() const;
    /// Whether this process opened the queue. The locks of a queue of its parent may be held for ever.
    bool isOfThisProcess() const;

private:
    Frame takeOldest() QUILL_REQUIRES(m_Mutex);
    bool isFull() const QUILL_REQUIRES(m_Mutex) { return m_Waiting == m_Settings.capacity; }
    /// Waits on @p condition while there is neither an answer nor the limit reached.
    template <typename Predicate>
    void waitWithin(Utilities::MutexLock& lock, std::chrono::nanoseconds limit, Predicate isAnswered)
        QUILL_REQUIRES(m_Mutex);

    const FrameQueueSettings m_Settings;
    const int m_Process;
    const std::shared_ptr<const FrameCounts> m_Counts;
    const FrameCounts::Losses m_LossesBefore;
    const std::chrono::steady_clock::time_point m_Opened = std::chrono::steady_clock::now();
    std::atomic<bool> m_Closed{false}; // written under the mutex

    mutable Utilities::Mutex m_Mutex; // guards the following members
    std::condition_variable m_Changed;
    std::condition_variable m_Space;
    std::vector<Frame> m_Frames QUILL_GUARDED_BY(m_Mutex); // a ring; empty once closed
    std::size_t m_Oldest QUILL_GUARDED_BY(m_Mutex) = 0;
    std::size_t m_Waiting QUILL_GUARDED_BY(m_Mutex) = 0;
    std::optional<FrameQueueStatus> m_End QUILL_GUARDED_BY(m_Mutex);
    std::uint64_t m_LetPassRun QUILL_GUARDED_BY(m_Mutex) = 0; // the last run whose frames do not wait for space
    std::uint64_t m_Arrived QUILL_GUARDED_BY(m_Mutex) = 0;
    std::uint64_t m_Delivered QUILL_GUARDED_BY(m_Mutex) = 0;
    std::uint64_t m_Dropped QUILL_GUARDED_BY(m_Mutex) = 0;
};

} // namespace CameraInterface
