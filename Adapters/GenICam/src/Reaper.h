// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <thread>

#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// Does on a thread of its own what takes seconds when a camera is gone: closing it. Thread-safe.
class Reaper {
public:
    Reaper() = default;
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;
    ~Reaper() { finish(); }

    void take(const std::function<void()>& work) noexcept QUILL_EXCLUDES(m_Mutex);
    /// Waits until everything is done, and ends the thread. Never called on it.
    void finish() QUILL_EXCLUDES(m_Mutex);

private:
    void run();

    Utilities::Mutex m_Mutex; // guards the following members; not held while something is done
    std::condition_variable m_Changed;
    std::deque<std::function<void()>> m_Work QUILL_GUARDED_BY(m_Mutex);
    bool m_Finish QUILL_GUARDED_BY(m_Mutex) = false;
    std::thread m_Thread QUILL_GUARDED_BY(m_Mutex);
};

} // namespace GenICamAdapter
