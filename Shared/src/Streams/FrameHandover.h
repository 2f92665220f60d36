#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <vector>

#include "Utilities/Mutex.h"

namespace OrvexAdapter {

/// Hands frames from the worker of a stream to the one caller that waits. A frame is moved, never copied, and never
/// older than the request for it. Thread-safe.
class FrameHandover {
public:
    enum class Outcome { Frame, TimedOut, Stopped, CaptureEnded };

    /// A run begins: requests are going to be served.
    void open();
    /// The run is over: whoever waits, or comes later, is told why.
    void close(Outcome why);

    /// Whether somebody waits; asked by the worker for every frame, without the lock.
    bool isRequested() const { return m_Requested; }
    /// Gives a frame to whoever waits. Does nothing if the request was dropped meanwhile.
    void deliver(std::vector<unsigned char>&& frame);
    /// Asks for the next frame whose capture completes from now on and waits for it. A frame that is there comes before
    /// every other outcome.
    Outcome take(std::chrono::steady_clock::time_point deadline, std::vector<unsigned char>& frame);

private:
    Utilities::Mutex m_Mutex; // guards what follows
    std::condition_variable m_Condition;
    std::atomic<bool> m_Requested{false}; // written under the mutex
    bool m_Ready QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_Open QUILL_GUARDED_BY(m_Mutex) = false;
    Outcome m_Why QUILL_GUARDED_BY(m_Mutex) = Outcome::Stopped; // while not open
    std::vector<unsigned char> m_ImageData QUILL_GUARDED_BY(m_Mutex);
};

} // namespace OrvexAdapter
