// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "Utilities/Mutex.h"

namespace Imaging {

/// Threads that take a share of long conversions. They start with the first conversion that is shared, and sleep
/// between conversions until the process exits or the library is unloaded. Thread-safe.
// Not a packaged pool: oneTBB 2021.8 ends the process if its first thread cannot be started; has no threads in a forked
// child, where work for another thread waits for ever; and, since Debian's library is not built for it, makes
// ThreadSanitizer report false races on the images themselves.
class Workers {
public:
    /// @param most the maximum number of threads
    explicit Workers(int most);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// The workers of the process. They are closed at exit, before OpenCV ends its threads, and never destroyed, so
    /// that images can still be converted afterwards.
    static Workers& instance();

    /// Calls @p work with each number from 0 to below @p pieces, on @p threads threads including the calling one, and
    /// returns when all calls have returned. If a call throws, skips the calls not yet begun and rethrows the
    /// exception.
    void share(int pieces, int threads, const std::function<void(int)>& work);

    /// Calls @p work on another thread and waits for it; on the calling thread if no other is available.
    void runElsewhere(const std::function<void()>& work);

    /// Ends the threads after their present work. From now on all work runs on the calling thread.
    void close();
    bool isClosed();

private:
    /// Work on the stack of its owner, who waits for it.
    struct Job {
        const std::function<void(int)>& work;
        int pieces;
        int ownersCore; ///< when the job began
        int begun = 0;
        int running = 0;
        std::exception_ptr failure{};

        bool isDone() const { return begun == pieces && running == 0; }
    };
    struct Piece {
        Job* job;
        int number;
    };

    /// Offers the pieces of a job to up to @p workers threads; returns false if there are none.
    bool offer(Job& job, int workers);
    void startThreadsLocked(int wanted) QUILL_REQUIRES(m_Mutex);
    void runThread();
    /// Waits for the next piece of any job; returns nothing if the thread must end.
    std::optional<Piece> waitForPiece();
    std::optional<Piece> takeOfferedLocked() QUILL_REQUIRES(m_Mutex);
    std::optional<Piece> takeLocked(Job& job) QUILL_REQUIRES(m_Mutex);
    void run(const Piece& piece);
    /// Waits until all pieces are done, and rethrows the exception of a piece.
    void finish(Job& job);

    const int m_Most;
    Utilities::Mutex m_Mutex; // guards the following members and the jobs
    std::condition_variable m_Work;
    std::condition_variable m_Done;
    std::vector<Job*> m_Jobs QUILL_GUARDED_BY(m_Mutex);
    std::vector<std::thread> m_Threads QUILL_GUARDED_BY(m_Mutex);
    bool m_Closed QUILL_GUARDED_BY(m_Mutex) = false;
};

} // namespace Imaging
