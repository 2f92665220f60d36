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

/// Threads that take their share of long conversions. They start when there is something to share for the first time,
/// and sleep in between until the process exits or the library is unloaded. Thread-safe.
// No packaged pool, measured with oneTBB 2021.8: where its first thread cannot be started, a conversion ends the
// process; in a forked child it has no threads, and work for another thread waits for ever; ThreadSanitizer reports
// races that are none, on the images themselves, because Debian's library is not built for it.
class Workers {
public:
    /// @param most so many threads at most
    explicit Workers(int most);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// Those of the process, which are closed when it exits, before OpenCV ends its threads. They are never destroyed,
    /// so that images may be converted later still.
    static Workers& instance();

    /// Calls @p work with each number from 0 to below @p pieces, on @p threads threads of which this is one, and
    /// returns when all calls have. What a call throws is thrown here, and what was not begun then is left out.
    void share(int pieces, int threads, const std::function<void(int)>& work);

    /// Calls @p work on another thread and waits for it; on this one where no other can be had.
    void runElsewhere(const std::function<void()>& work);

    /// Ends the threads once they have nothing left to do. From now on everything runs on the thread that asks for it.
    void close();
    bool isClosed();

private:
    /// Work that its owner waits for, on whose stack it lies.
    struct Job {
        const std::function<void(int)>& work;
        int pieces;
        int begun = 0;
        int running = 0;
        std::exception_ptr failure{};

        bool isDone() const { return begun == pieces && running == 0; }
    };
    struct Piece {
        Job* job;
        int number;
    };

    /// Lets up to @p workers threads take pieces of a job; false: there is none.
    bool offer(Job& job, int workers);
    void startThreadsLocked(int wanted) QUILL_REQUIRES(m_Mutex);
    void runThread();
    /// The next piece of any job; nothing: the threads are to end.
    std::optional<Piece> waitForPiece();
    std::optional<Piece> takeOfferedLocked() QUILL_REQUIRES(m_Mutex);
    std::optional<Piece> takeLocked(Job& job) QUILL_REQUIRES(m_Mutex);
    void run(const Piece& piece);
    /// Waits until all pieces are done, and throws what one of them threw.
    void finish(Job& job);

    const int m_Most;
    Utilities::Mutex m_Mutex; // guards what follows, and the jobs
    std::condition_variable m_Work;
    std::condition_variable m_Done;
    std::vector<Job*> m_Jobs QUILL_GUARDED_BY(m_Mutex);
    std::vector<std::thread> m_Threads QUILL_GUARDED_BY(m_Mutex);
    bool m_Closed QUILL_GUARDED_BY(m_Mutex) = false;
};

} // namespace Imaging
