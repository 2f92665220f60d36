// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <thread>

#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// Does on a thread of its own what takes seconds when a camera is gone: closing it, and saying good-bye once it
/// answers again. Thread-safe.
class Reaper {
public:
    Reaper() = default;
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;
    ~Reaper() { finish(); }

    /// Does its part, and returns whether that was all; otherwise it is called again half a second later.
    using Work = std::function<bool()>;

    void take(const Work& work) noexcept QUILL_EXCLUDES(m_Mutex);
    /// Does everything once more, and ends the thread. Never called on it.
    void finish() QUILL_EXCLUDES(m_Mutex);

private:
    void run();

    Utilities::Mutex m_Mutex; // guards the following members; not held while something is done
    std::condition_variable m_Changed;
    std::list<Work> m_Work QUILL_GUARDED_BY(m_Mutex);
    bool m_Finish QUILL_GUARDED_BY(m_Mutex) = false;
    std::thread m_Thread QUILL_GUARDED_BY(m_Mutex);
};

} // namespace GenICamAdapter
