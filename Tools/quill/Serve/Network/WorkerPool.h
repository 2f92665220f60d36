// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <Quill.h>

namespace QuillTool::Serve {

/// Threads that run jobs, which may wait for a camera. At most two jobs about one camera run at once, so that a slow
/// camera leaves the other threads to the others. Thread-safe.
class WorkerPool {
public:
    WorkerPool(unsigned threads, std::size_t maximumWaiting);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    ~WorkerPool();

    /// Runs a job on one of the threads; @p job must not throw.
    /// @param subject  the camera; empty: none
    /// @return false: too many jobs wait, or the pool ends
    bool post(const std::string& subject, std::function<void()> job);
    /// Drops the jobs that wait, and returns after those that run.
    void stop();

private:
    struct Job {
        std::string subject;
        std::function<void()> run;
    };

    void work();
    bool isBusy(const std::string& subject) const QUILL_REQUIRES(m_Mutex);
    std::deque<Job>::iterator findNext() QUILL_REQUIRES(m_Mutex);

    const std::size_t m_MaximumWaiting;
    Utilities::Mutex m_Mutex; // guards what follows
    bool m_IsEnding QUILL_GUARDED_BY(m_Mutex) = false;
    std::deque<Job> m_Waiting QUILL_GUARDED_BY(m_Mutex);
    std::map<std::string, unsigned> m_Running QUILL_GUARDED_BY(m_Mutex); // jobs by subject
    std::condition_variable m_Changed;
    std::vector<std::thread> m_Threads;
};

} // namespace QuillTool::Serve
