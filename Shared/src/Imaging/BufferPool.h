#pragma once

#include <cstddef>
#include <vector>

#include "Utilities/Mutex.h"

namespace Imaging {

/// Keeps the byte vectors of destroyed images for the next ones: fresh memory costs page faults and a zero fill that a
/// conversion overwrites at once. Thread-safe.
class BufferPool {
public:
    using Buffer = std::vector<unsigned char>;

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
class ScratchBuffer {
public:
    explicit ScratchBuffer(std::size_t size) : m_Buffer(BufferPool::instance().take(size)) {}
    ScratchBuffer(const ScratchBuffer&) = delete;
    ScratchBuffer& operator=(const ScratchBuffer&) = delete;
    ~ScratchBuffer() { BufferPool::instance().giveBack(std::move(m_Buffer)); }

    unsigned char* data() { return m_Buffer.data(); }

private:
    BufferPool::Buffer m_Buffer;
};

} // namespace Imaging
