// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <deque>

#include "../Export.h"
#include "Mutex.h"

namespace Utilities {

/// Turns a series of frames into a rate, averaged over a sliding interval. Thread-safe.
class QUILL_API FrameCounter {
public:
    FrameCounter() = default;
    FrameCounter(const FrameCounter&) = delete;
    FrameCounter& operator=(const FrameCounter&) = delete;
    ~FrameCounter();

    /// Counts one frame, now.
    void incrementFrameCount();
    /// The frames of the last interval divided by the time from the oldest of them to now, in 1/s. Of more than 65,536
    /// frames the last 65,536 are used.
    double getFramesPerSecond();
    /// All frames counted since construction. It only grows.
    unsigned long long getFrameCount() const;
    /// Forgets the times of the frames counted so far.
    void resetFrameCount();
    /// The averaging interval in seconds, 1 at first; one that is not positive, or no number, has no frames. Frames
    /// that an interval left out do not come back when it grows.
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
