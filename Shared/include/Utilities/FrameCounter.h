// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <deque>

#include "../Export.h"
#include "Mutex.h"

namespace Utilities {

/// Measures a frame rate, averaged over a sliding interval. Thread-safe.
class QUILL_API FrameCounter {
public:
    FrameCounter() = default;
    FrameCounter(const FrameCounter&) = delete;
    FrameCounter& operator=(const FrameCounter&) = delete;
    ~FrameCounter();

    /// Counts one frame, now.
    void incrementFrameCount();
    /// Returns the frames of the last interval divided by the time from the oldest of them to now, in 1/s. Uses at most
    /// the last 65,536 frames.
    double getFramesPerSecond();
    /// Returns the number of frames counted since construction. It never decreases.
    unsigned long long getFrameCount() const;
    /// Forgets the times of the frames counted so far.
    void resetFrameCount();
    /// Sets the averaging interval in seconds, initially 1. An interval that is not positive, or not a number, has no
    /// frames. Frames that a short interval has dropped do not come back when it grows.
    void setDesiredIntervalTime(double seconds);
    double getDesiredIntervalTime();

private:
    void dropOldFrames(double now) QUILL_REQUIRES(m_Mutex);

    std::atomic<double> m_DesiredIntervalTime{1.0};
    std::atomic<unsigned long long> m_FrameCount{0};
    Mutex m_Mutex; // guards the rate and the times
    double m_FramesPerSecond QUILL_GUARDED_BY(m_Mutex) = 0;
    std::deque<double> m_FrameTimes QUILL_GUARDED_BY(m_Mutex); // seconds on the steady clock, oldest first
};

} // namespace Utilities
