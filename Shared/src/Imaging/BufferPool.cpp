#include "Imaging/BufferPool.h"

#include <algorithm>
#include <utility>

#include "Internal/NeverDestroyed.h"

namespace Imaging {

namespace {

/// Below this the allocator is as fast as the pool.
constexpr std::size_t kSmallestPooled = 64 * 1024;
/// Eight results of a 5-megapixel camera at 16 bits and three channels.
constexpr std::size_t kMaximumPooledBytes = 256 * 1024 * 1024;
constexpr std::size_t kMaximumBuffers = 16;

} // namespace

BufferPool::BufferPool() {
    m_Buffers.reserve(kMaximumBuffers); // so that giving back never allocates
}

BufferPool& BufferPool::instance() {
    static Internal::NeverDestroyed<BufferPool> pool;
    return pool.get();
}

BufferPool::Buffer BufferPool::take(std::size_t size) {
    Buffer buffer;
    if (size >= kSmallestPooled) {
        const Utilities::MutexLock lock(m_Mutex);
        // The smallest one that is large enough and not wastefully large; of equals the last given back, whose content
        // is most likely in the cache.
        const auto fits = [&](const Buffer& candidate) {
            return candidate.capacity() >= size && candidate.capacity() / 2 <= size;
        };
        auto best = m_Buffers.end();
        for (auto candidate = m_Buffers.begin(); candidate != m_Buffers.end(); ++candidate) {
            if (fits(*candidate) && (best == m_Buffers.end() || candidate->capacity() <= best->capacity())) {
                best = candidate;
            }
        }
        if (best != m_Buffers.end()) {
            m_PooledBytes -= best->capacity();
            buffer = std::move(*best);
            m_Buffers.erase(best);
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
    Buffer evicted; // the last one is freed after the lock is released
    const Utilities::MutexLock lock(m_Mutex);
    while (!m_Buffers.empty() &&
           (m_Buffers.size() == kMaximumBuffers || m_PooledBytes + capacity > kMaximumPooledBytes)) {
        m_PooledBytes -= m_Buffers.front().capacity();
        evicted = std::move(m_Buffers.front());
        m_Buffers.erase(m_Buffers.begin());
    }
    m_PooledBytes += capacity;
    m_Buffers.push_back(std::move(buffer));
}

} // namespace Imaging
