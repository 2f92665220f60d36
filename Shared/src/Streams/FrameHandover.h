// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <utility>
#include <vector>

#include "Export.h"
#include "Streams/Stream.h"
#include "Utilities/Mutex.h"

namespace CameraInterface {

/// Hands the frames of one run from its worker to waiting callers, one after another in the order of their requests. A
/// frame is moved, never copied, and never older than the request for it. Thread-safe.
class QUILL_ADAPTER_API FrameHandover {
public:
    enum class Outcome { Frame, TimedOut, Stopped, CaptureEnded, OutOfMemory };

    /// One caller's place in the queue, from construction to destruction. Used by one thread.
    class QUILL_ADAPTER_API Request {
    public:
        explicit Request(FrameHandover& handover);
        Request(const Request&) = delete;
        Request& operator=(const Request&) = delete;
        ~Request();

        /// Waits for a frame whose capture completes after the request was made. An available frame takes precedence
        /// over every other outcome. After TimedOut the place is kept: the wait may be resumed with a longer bound.
        /// @param bound from the request, or from the last frame given to another caller
        Outcome wait(std::chrono::nanoseconds bound);
        /// The frame, after Outcome::Frame.
        std::vector<unsigned char> takeImageData() { return std::move(m_ImageData); }
        /// That of the frame, which may be another one than that of the frames before and after it.
        FrameGeometry geometry() const { return m_Geometry; }

    private:
        friend class FrameHandover;

        FrameHandover& m_Handover;
        const std::chrono::steady_clock::time_point m_Begin = std::chrono::steady_clock::now();
        bool m_FrameReady = false;              // guarded by the mutex of the hand-over
        std::vector<unsigned char> m_ImageData; // written before m_FrameReady is set, read after it was seen
        FrameGeometry m_Geometry;               // the same
    };

    /// Ends the run: present and later waiters get the reason. Only the first call has an effect.
    void close(Outcome why);

    /// Whether a caller waits. The worker checks it for every frame, without the lock.
    bool isRequested() const { return m_FrameRequested; }
    /// Gives a frame to the caller that has waited longest.
    /// @return false: no caller waits any more, and the frame stays where it is
    bool deliver(std::vector<unsigned char>&& frame, const FrameGeometry& geometry = {});

private:
    void requestFrame(Request& request);
    void dropRequest(Request& request);

    Utilities::Mutex m_RequestMutex; // guards the following members and the answers to the requests
    std::condition_variable m_Answered;
    std::atomic<bool> m_FrameRequested{false};                         // written under the mutex
    std::vector<Request*> m_Requests QUILL_GUARDED_BY(m_RequestMutex); // not yet answered, oldest first
    std::chrono::steady_clock::time_point m_LastDelivery QUILL_GUARDED_BY(m_RequestMutex){};
    bool m_Open QUILL_GUARDED_BY(m_RequestMutex) = true;
    Outcome m_Why QUILL_GUARDED_BY(m_RequestMutex) = Outcome::Stopped; // while not open
};

} // namespace CameraInterface
