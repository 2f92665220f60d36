// SPDX-License-Identifier: Apache-2.0

#include "Reaper.h"

#include <chrono>
#include <exception>
#include <utility>

namespace GenICamAdapter {

using Utilities::MutexLock;

namespace {

constexpr std::chrono::milliseconds kPause{500};

/// @return whether the work is done
bool attempt(const Reaper::Work& work) noexcept {
    try {
        return work();
    } catch (const std::exception&) {
        return false; // there is no memory now
    }
}

} // namespace

void Reaper::take(const Work& work) noexcept {
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
    attempt(work);
}

void Reaper::finish() {
    while (true) { // work that is taken meanwhile starts another thread
        std::thread thread;
        {
            const MutexLock lock(m_Mutex);
            m_Finish = m_Thread.joinable();
            if (!m_Finish) {
                return;
            }
            thread.swap(m_Thread);
        }
        m_Changed.notify_all();
        thread.join();
    }
}

void Reaper::run() {
    std::list<Work> unfinished;
    bool isLast = false;
    while (!isLast) {
        {
            MutexLock lock(m_Mutex);
            const auto isCalled = [this]() QUILL_REQUIRES(m_Mutex) { return m_Finish || !m_Work.empty(); };
            if (unfinished.empty()) {
                lock.wait(m_Changed, isCalled);
            } else {
                lock.waitFor(m_Changed, kPause, isCalled);
            }
            isLast = m_Finish;
            unfinished.splice(unfinished.end(), m_Work);
        }
        unfinished.remove_if(attempt);
    }
}

} // namespace GenICamAdapter
