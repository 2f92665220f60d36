// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Workers.h"

#include <algorithm>
#include <exception>

#include <opencv2/core.hpp>

#include "Base/AtExit.h"
#include "Base/Cores.h"
#include "Base/ProcessWide.h"

namespace Imaging {

namespace {

/// With the caller, more threads than any memory bandwidth can feed.
constexpr int kMostWorkers = 15;

constexpr int kNoCore = -1;

/// The number of workers: with the caller, as many threads as OpenCV uses or the machine runs; at least one, for
/// runElsewhere(). OpenCV is queried once, and not in a forked child before fork() returns there.
int workersOfMachine() {
    static const int threads = std::max(cv::getNumThreads(), static_cast<int>(std::thread::hardware_concurrency()));
    return std::clamp(threads - 1, 1, kMostWorkers);
}

struct WorkersOfProcess : Workers {
    WorkersOfProcess() : Workers(workersOfMachine()) {}
};

} // namespace

Workers::Workers(int most) : m_Most(most) {}

Workers::~Workers() {
    close();
}

Workers& Workers::instance() {
    static Base::ProcessWide<WorkersOfProcess> workers;
    // Created after OpenCV's own state, which was initialised above, and therefore destroyed before it.
    static const Base::AtExit guard([] { workers.get().close(); });
    return workers.get();
}

void Workers::share(int pieces, int threads, const std::function<void(int)>& work) {
    Job job{work, pieces, Base::currentCore()};
    offer(job, std::min(pieces, threads) - 1);
    const auto takePiece = [&] {
        const Utilities::MutexLock lock(m_Mutex);
        return takeLocked(job);
    };
    while (const std::optional<Piece> piece = takePiece()) {
        run(*piece);
    }
    finish(job);
}

void Workers::runElsewhere(const std::function<void()>& work) {
    const std::function<void(int)> onlyPiece = [&work](int) { work(); };
    Job job{onlyPiece, 1, kNoCore}; // its owner only waits
    if (offer(job, 1)) {
        finish(job);
    } else {
        work();
    }
}

void Workers::close() {
    std::vector<std::thread> threads;
    {
        const Utilities::MutexLock lock(m_Mutex);
        m_Closed = true;
        threads.swap(m_Threads);
    }
    m_Work.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

bool Workers::isClosed() {
    const Utilities::MutexLock lock(m_Mutex);
    return m_Closed;
}

bool Workers::offer(Job& job, int workers) {
    {
        const Utilities::MutexLock lock(m_Mutex);
        startThreadsLocked(workers);
        if (m_Threads.empty()) {
            return false;
        }
        m_Jobs.push_back(&job);
    }
    for (int i = 0; i < workers; ++i) {
        m_Work.notify_one();
    }
    return true;
}

void Workers::startThreadsLocked(int wanted) {
    try {
        while (!m_Closed && static_cast<int>(m_Threads.size()) < std::min(wanted, m_Most)) {
            m_Threads.emplace_back(&Workers::runThread, this);
        }
    } catch (const std::exception&) { // no more threads can be started now
    }
}

void Workers::runThread() {
    while (const std::optional<Piece> piece = waitForPiece()) {
        Base::leaveCore(piece->job->ownersCore);
        run(*piece);
    }
}

std::optional<Workers::Piece> Workers::waitForPiece() {
    Utilities::MutexLock lock(m_Mutex);
    std::optional<Piece> piece;
    lock.wait(m_Work, [&]() QUILL_REQUIRES(m_Mutex) {
        piece = takeOfferedLocked();
        return piece || m_Closed;
    });
    return piece;
}

std::optional<Workers::Piece> Workers::takeOfferedLocked() {
    for (Job* job : m_Jobs) {
        if (const std::optional<Piece> piece = takeLocked(*job)) {
            return piece;
        }
    }
    return std::nullopt;
}

std::optional<Workers::Piece> Workers::takeLocked(Job& job) {
    if (job.begun == job.pieces) {
        return std::nullopt;
    }
    ++job.running;
    return Piece{&job, job.begun++};
}

void Workers::run(const Piece& piece) {
    std::exception_ptr failure;
    try {
        piece.job->work(piece.number);
    } catch (...) {
        failure = std::current_exception();
    }
    const Utilities::MutexLock lock(m_Mutex);
    Job& job = *piece.job;
    --job.running;
    if (failure) {
        job.begun = job.pieces;
        job.failure = job.failure ? job.failure : failure;
    }
    if (job.isDone()) {
        m_Done.notify_all();
    }
}

void Workers::finish(Job& job) {
    {
        Utilities::MutexLock lock(m_Mutex);
        lock.wait(m_Done, [&job] { return job.isDone(); });
        m_Jobs.erase(std::remove(m_Jobs.begin(), m_Jobs.end(), &job), m_Jobs.end());
    }
    if (job.failure) {
        std::rethrow_exception(job.failure);
    }
}

} // namespace Imaging
