// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "../Export.h"
#include "Frame.h"
#include "StreamCounter.h"

namespace CameraInterface {

class FrameHub;
class FrameQueueState;

/// What happens to a frame that arrives while a queue is full.
enum class WhenFull : std::uint8_t {
    DropOldest, ///< the queue drops the frame that waited longest: the newest frames stay
    DropNewest, ///< the queue drops the arriving frame: a series without gaps stays, which ends early
    /// The stream waits until the queue has space or the stream stops. Meanwhile the library takes no frame from the
    /// camera, for any consumer, getImage() included, and the camera keeps or drops frames as it can.
    HoldBack
};

/// More frames than any computer has memory for.
constexpr std::size_t kMaximumQueueCapacity = 65536;

/// How many frames a queue holds, and what becomes of the others.
struct FrameQueueSettings {
    std::size_t capacity = 8; ///< frames that wait; 1 to kMaximumQueueCapacity
    WhenFull whenFull = WhenFull::DropOldest;
    std::string name; ///< distinguishes the queue in Camera::getStreamCounters()
};

/// Why a wait for a frame ended.
enum class FrameQueueStatus : std::uint8_t {
    Frame,       ///< with a frame
    TimedOut,    ///< no frame came in time
    Stopped,     ///< the stream does not run
    RunEnded,    ///< the camera ended its capture by itself
    OutOfMemory, ///< the run ended because there was no memory for the next frame
    Suspended,   ///< the stream does not run because the camera is suspended
    CameraGone,  ///< the camera has left the list or was destroyed: no frame will ever come
    Closed       ///< close() was called
};

/// Returns a sentence about the status, such as "The stream does not run.".
QUILL_API const char* describe(FrameQueueStatus status);

/// The end of a wait for a frame.
struct FrameResult {
    FrameQueueStatus status = FrameQueueStatus::TimedOut;
    Frame frame; ///< without an image unless the status is Frame

    explicit operator bool() const { return status == FrameQueueStatus::Frame; }
};

/// Every frame of a camera's stream, in order, from the moment Camera::openFrameQueue() returns.
///
/// Queues of one camera are independent of each other and of Camera::getImage(); they share the frames' memory without
/// a copy. A queue outlives stops and starts of the stream, and the camera: frames that wait stay available, and only
/// when none is left a wait ends with the reason. Opening and destroying queues is possible at any time, also during a
/// run.
///
/// Thread-safe; several threads may pop, each frame goes to one of them. Moving or destroying a queue must not run
/// concurrently with other operations: close() ends the waits of other threads. In a forked child, a queue of the
/// parent can only be destroyed.
class QUILL_API FrameQueue {
public:
    /// Leaves @p other without a queue: it can only be destroyed or assigned to.
    FrameQueue(FrameQueue&& other) noexcept;
    FrameQueue& operator=(FrameQueue&& other) noexcept;
    /// Closes the queue.
    ~FrameQueue();

    /// Takes the oldest frame, and waits for one if none is there. Ends at once when the stream ends or does not run;
    /// waitForRun() waits for its start.
    FrameResult pop();
    /// The same for at most @p limit.
    FrameResult pop(std::chrono::nanoseconds limit);
    /// The same without waiting; TimedOut if the stream runs and no frame is there.
    FrameResult tryPop();
    /// Waits until the stream runs or a frame is there. A run that ends before the waiting thread wakes may be missed.
    /// @return Frame if so, otherwise CameraGone or Closed
    FrameQueueStatus waitForRun();
    /// The same for at most @p limit; then TimedOut.
    FrameQueueStatus waitForRun(std::chrono::nanoseconds limit);
    /// Drops all frames, takes no more, and ends all waits with Closed.
    void close();

    /// The number of frames that wait.
    std::size_t size() const;
    std::size_t capacity() const;
    /// What became of the frames that were captured since the queue was opened: "Captured" is the sum of "Delivered",
    /// "Waiting", "Dropped" and of the losses before the queue.
    std::vector<StreamCounter> getCounters() const;

    /// Pops one frame after another without a time limit, for range-for loops.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Frame;
        using difference_type = std::ptrdiff_t;
        using pointer = const Frame*;
        using reference = const Frame&;

        Iterator() = default;
        explicit Iterator(FrameQueue& queue) : m_Queue(&queue) { ++*this; }

        const Frame& operator*() const { return m_Result.frame; }
        const Frame* operator->() const { return &m_Result.frame; }
        Iterator& operator++() {
            m_Result.frame = {}; // its memory is free while the next one is awaited
            m_Result = m_Queue->pop();
            if (!m_Result) {
                m_Queue = nullptr;
            }
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const Iterator& a, const Iterator& b) { return a.m_Queue == b.m_Queue; }
        friend bool operator!=(const Iterator& a, const Iterator& b) { return !(a == b); }

    private:
        FrameQueue* m_Queue = nullptr; // null at the end
        FrameResult m_Result;
    };
    /// Waits for the first frame. The loop ends when a wait ends without a frame.
    Iterator begin() { return Iterator(*this); }
    Iterator end() { return {}; }

private:
    friend class FrameHub;
    explicit FrameQueue(std::shared_ptr<FrameQueueState> state);

    std::shared_ptr<FrameQueueState> m_State; // empty after a move
};

} // namespace CameraInterface
