#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Utilities/Mutex.h"

namespace Imaging {

/// Keeps the byte vectors of destroyed images for the next ones: fresh memory costs page faults and a zero fill that a
/// conversion overwrites at once. Thread-safe.
class BufferPool {
public:
    using Buffer = std::vector<unsigned char>;

    BufferPool();

    /// The pool of the process. It is never destroyed, so that images may outlive everything else.
    static BufferPool& instance();

    /// A buffer of exactly @p size bytes, whose content is not defined.
    Buffer take(std::size_t size);

    /// Keeps a buffer, or frees it where it is small or the pool is full.
    void giveBack(Buffer buffer) noexcept;

private:
    Utilities::Mutex m_Mutex; // guards the buffers and their size
    std::vector<Buffer> m_Buffers QUILL_GUARDED_BY(m_Mutex);
    std::size_t m_PooledBytes QUILL_GUARDED_BY(m_Mutex) = 0;
};

/// A buffer of the pool for work in between, given back at the end of its life.
///
/// It begins beside the boundary of a vector register: there, cv::merge() writes pixels of three samples into the
/// cache, from which the next step reads them. On a boundary it would write past the cache.
class ScratchBuffer {
public:
    explicit ScratchBuffer(std::size_t size) : m_Buffer(BufferPool::instance().take(size + kBoundary + kBeside)) {}
    ScratchBuffer(const ScratchBuffer&) = delete;
    ScratchBuffer& operator=(const ScratchBuffer&) = delete;
    ~ScratchBuffer() { BufferPool::instance().giveBack(std::move(m_Buffer)); }

    unsigned char* data() {
        const auto address = reinterpret_cast<std::uintptr_t>(m_Buffer.data());
        return m_Buffer.data() + (kBoundary - address % kBoundary) + kBeside;
    }

private:
    static constexpr std::size_t kBoundary = 64;
    static constexpr std::size_t kBeside = 8; // no multiple of three samples of 1 or 2 bytes

    BufferPool::Buffer m_Buffer;
};

} // namespace Imaging
