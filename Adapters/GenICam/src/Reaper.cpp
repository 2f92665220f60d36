// SPDX-License-Identifier: Apache-2.0

#include "Reaper.h"

#include <exception>
#include <utility>

namespace GenICamAdapter {

using Utilities::MutexLock;

void Reaper::take(const std::function<void()>& work) noexcept {
    try {
        const MutexLock lock(m_Mutex);
        if (!m_Thread.joinable()) {
            m_Thread = std::thread([this] { run(); });
        }
        m_Work.push_back(work);
        m_Changed.notify_all();
        return;
    } catch (const std::exception&) {
        // No thread or no memory: it is done here, and takes its time.
    }
    work();
}

void Reaper::finish() {
    std::thread thread;
    {
        const MutexLock lock(m_Mutex);
        m_Finish = true;
        thread.swap(m_Thread);
    }
    m_Changed.notify_all();
    if (thread.joinable()) {
        thread.join();
    }
    const MutexLock lock(m_Mutex);
    m_Finish = false;
}

void Reaper::run() {
    while (true) {
        std::function<void()> work;
        {
            MutexLock lock(m_Mutex);
            lock.wait(m_Changed, [this]() QUILL_REQUIRES(m_Mutex) { return m_Finish || !m_Work.empty(); });
            if (m_Work.empty()) {
                return;
            }
            work = std::move(m_Work.front());
            m_Work.pop_front();
        }
        work();
    }
}

} // namespace GenICamAdapter
