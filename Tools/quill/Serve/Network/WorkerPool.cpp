// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/WorkerPool.h"

#include <algorithm>
#include <utility>

namespace QuillTool::Serve {

using Utilities::MutexLock;

namespace {

constexpr unsigned kRunningOfOneCamera = 2;
constexpr std::size_t kShareOfOneCamera = 4; // of the places where jobs wait

} // namespace

WorkerPool::WorkerPool(unsigned threads, std::size_t maximumWaiting) : m_MaximumWaiting(maximumWaiting) {
    for (unsigned i = 0; i < threads; ++i) {
        m_Threads.emplace_back([this] { work(); });
    }
}

WorkerPool::~WorkerPool() {
    stop();
}

bool WorkerPool::post(const std::string& subject, std::function<void()> job) {
    const MutexLock lock(m_Mutex);
    const auto ofSubject = static_cast<std::size_t>(std::count_if(
        m_Waiting.begin(), m_Waiting.end(), [&subject](const Job& waiting) { return waiting.subject == subject; }));
    if (m_IsEnding || m_Waiting.size() >= m_MaximumWaiting ||
        (!subject.empty() && ofSubject >= m_MaximumWaiting / kShareOfOneCamera)) {
        return false;
    }
    m_Waiting.push_back({subject, std::move(job)});
    m_Changed.notify_one();
    return true;
}

void WorkerPool::stop() {
    std::deque<Job> dropped;
    {
        const MutexLock lock(m_Mutex);
        m_IsEnding = true;
        dropped.swap(m_Waiting);
        m_Changed.notify_all();
    }
    dropped.clear();
    for (std::thread& thread : m_Threads) {
        thread.join();
    }
    m_Threads.clear();
}

bool WorkerPool::isBusy(const std::string& subject) const {
    const auto running = m_Running.find(subject);
    return !subject.empty() && running != m_Running.end() && running->second >= kRunningOfOneCamera;
}

std::deque<WorkerPool::Job>::iterator WorkerPool::findNext() {
    auto next = m_Waiting.begin();
    while (next != m_Waiting.end() && isBusy(next->subject)) {
        ++next;
    }
    return next;
}

void WorkerPool::work() {
    for (;;) {
        Job job;
        {
            MutexLock lock(m_Mutex);
            auto next = m_Waiting.end();
            while (!m_IsEnding && (next = findNext()) == m_Waiting.end()) {
                bool woken = false;
                lock.wait(m_Changed, [&woken] { return std::exchange(woken, true); });
            }
            if (m_IsEnding) {
                return;
            }
            job = std::move(*next);
            m_Waiting.erase(next);
            ++m_Running[job.subject];
        }
        job.run();
        job.run = nullptr; // what it holds goes before others may run
        const MutexLock lock(m_Mutex);
        if (--m_Running[job.subject] == 0) {
            m_Running.erase(job.subject);
        }
        m_Changed.notify_one(); // a job of this camera may have waited for its turn
    }
}

} // namespace QuillTool::Serve
