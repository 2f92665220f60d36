// SPDX-License-Identifier: Apache-2.0

#include "Imaging/BufferPool.h"

#include <algorithm>
#include <utility>

#include "Base/AtExit.h"
#include "Base/ProcessWide.h"

#if __has_include(<sanitizer/asan_interface.h>)
#    include <sanitizer/asan_interface.h>
#else // the compiler has no AddressSanitizer for this system
#    define ASAN_POISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#    define ASAN_UNPOISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#endif

namespace Imaging {

namespace {

/// Eight results of a 5-megapixel camera at 16 bits and three channels.
constexpr std::size_t kMaximumPooledBytes = 256 * 1024 * 1024;
constexpr std::size_t kMaximumBuffers = 16;

} // namespace

BufferPool::BufferPool(std::chrono::milliseconds patience) : m_Patience(patience) {
    m_Kept.reserve(kMaximumBuffers); // so that giveBack() never allocates
}

BufferPool::~BufferPool() { // NOLINT(bugprone-exception-escape): a failing mutex leaves nothing but to end
    close();
}

BufferPool& BufferPool::instance() {
    static Base::ProcessWide<BufferPool> pool;
    // Its thread must end before the library is unloaded.
    static const Base::AtExit guard([] { pool.get().close(); });
    return pool.get();
}

void BufferPool::close() {
    {
        const Utilities::MutexLock lock(m_Mutex);
        m_Closed = true;
        while (!m_Kept.empty()) {
            removeLocked(m_Kept.begin());
        }
    }
    const Utilities::MutexLock lock(m_WatchdogMutex);
    m_Watchdog.stop();
}

BufferPool::Buffer BufferPool::take(std::size_t size) {
    Buffer buffer;
    if (size >= kSmallestPooled) {
        const Utilities::MutexLock lock(m_Mutex);
        // The smallest buffer that is large enough and not wastefully large; of equals the last one returned, whose
        // content is most likely in the cache.
        const auto fits = [&](const Buffer& candidate) {
            return candidate.capacity() >= size && candidate.capacity() / 2 <= size;
        };
        auto best = m_Kept.end();
        for (auto kept = m_Kept.begin(); kept != m_Kept.end(); ++kept) {
            if (fits(kept->buffer) && (best == m_Kept.end() || kept->buffer.capacity() <= best->buffer.capacity())) {
                best = kept;
            }
        }
        if (best != m_Kept.end()) {
            buffer = removeLocked(best);
        }
    }
    buffer.resize(size);
    return buffer;
}

void BufferPool::giveBack(Buffer buffer) noexcept {
    const std::size_t capacity = buffer.capacity();
    if (capacity < kSmallestPooled || capacity > kMaximumPooledBytes) {
        return;
    }
    bool startsFreeing = false;
    {
        Buffer evicted; // freed after the lock is released
        const Utilities::MutexLock lock(m_Mutex);
        if (m_Closed) {
            return;
        }
        while (!m_Kept.empty() && (m_Kept.size() == kMaximumBuffers || m_KeptBytes + capacity > kMaximumPooledBytes)) {
            evicted = removeLocked(m_Kept.begin());
        }
        m_KeptBytes += capacity;
        ASAN_POISON_MEMORY_REGION(buffer.data(), capacity);
        m_Kept.push_back({std::move(buffer), std::chrono::steady_clock::now()});
        startsFreeing = !std::exchange(m_Freeing, true);
    }
    if (startsFreeing) {
        startFreeing();
    }
}

std::size_t BufferPool::keptBytes() {
    const Utilities::MutexLock lock(m_Mutex);
    return m_KeptBytes;
}

BufferPool::Buffer BufferPool::removeLocked(std::vector<Kept>::iterator kept) {
    Buffer buffer = std::move(kept->buffer);
    m_Kept.erase(kept);
    m_KeptBytes -= buffer.capacity();
    ASAN_UNPOISON_MEMORY_REGION(buffer.data(), buffer.capacity());
    return buffer;
}

bool BufferPool::freeUnused() {
    const auto latest = std::chrono::steady_clock::now() - m_Patience;
    while (true) {
        Buffer unused; // freed after the lock is released
        const Utilities::MutexLock lock(m_Mutex);
        if (m_Kept.empty() || m_Kept.front().since > latest) {
            return m_Freeing = !m_Kept.empty();
        }
        unused = removeLocked(m_Kept.begin());
    }
}

void BufferPool::startFreeing() {
    const Utilities::MutexLock watchdogLock(m_WatchdogMutex);
    const auto isClosed = [this] {
        const Utilities::MutexLock lock(m_Mutex);
        return m_Closed;
    };
    if (isClosed()) {
        return;
    }
    try {
        m_Watchdog.start(static_cast<int>(m_Patience.count() / 2), [this] { return freeUnused(); });
    } catch (...) { // no thread can be started now
        const Utilities::MutexLock lock(m_Mutex);
        m_Freeing = false;
    }
}

} // namespace Imaging
