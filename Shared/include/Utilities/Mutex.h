// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>

// Clang checks at compile time that guarded members are accessed under their lock; for other compilers these macros are
// empty.
#if defined(__clang__)
#    define QUILL_THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#    define QUILL_THREAD_ANNOTATION(attribute)
#endif
#define QUILL_GUARDED_BY(mutex) QUILL_THREAD_ANNOTATION(guarded_by(mutex))
#define QUILL_REQUIRES(mutex) QUILL_THREAD_ANNOTATION(requires_capability(mutex))
#define QUILL_EXCLUDES(mutex) QUILL_THREAD_ANNOTATION(locks_excluded(mutex))
#define QUILL_ACQUIRE(mutex) QUILL_THREAD_ANNOTATION(acquire_capability(mutex))
#define QUILL_RELEASE() QUILL_THREAD_ANNOTATION(release_capability())

namespace Utilities {

/// A non-recursive mutex with thread-safety annotations.
class QUILL_THREAD_ANNOTATION(capability("mutex")) Mutex {
private:
    friend class MutexLock;
    std::mutex m_Mutex;
};

/// Holds a mutex for its own lifetime.
class QUILL_THREAD_ANNOTATION(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) QUILL_ACQUIRE(mutex) : m_Lock(mutex.m_Mutex) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() QUILL_RELEASE() = default;

    /// Releases the mutex until @p condition is notified with @p predicate true.
    template <typename Predicate>
    void wait(std::condition_variable& condition, Predicate predicate) {
        condition.wait(m_Lock, predicate);
    }

    /// The same, for at most @p duration.
    /// @return the last result of the predicate
    template <typename Duration, typename Predicate>
    bool waitFor(std::condition_variable& condition, const Duration& duration, Predicate predicate) {
        return condition.wait_for(m_Lock, duration, predicate);
    }

    /// The same, until @p end at the latest.
    template <typename TimePoint, typename Predicate>
    bool waitUntil(std::condition_variable& condition, const TimePoint& end, Predicate predicate) {
        return condition.wait_until(m_Lock, end, predicate);
    }

private:
    std::unique_lock<std::mutex> m_Lock;
};

} // namespace Utilities
