// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

#include "Utilities/Mutex.h"
#include "Utilities/Watchdog.h"

namespace Imaging {

/// Keeps the byte vectors of destroyed images for reuse: fresh memory costs page faults and a zero fill that a
/// conversion overwrites at once. A thread, which runs as long as buffers are kept, frees those that are not reused for
/// a while. AddressSanitizer reports accesses to kept buffers. Thread-safe.
class BufferPool {
public:
    using Buffer = std::vector<unsigned char>;

    /// Below this size the allocator is as fast as the pool.
    static constexpr std::size_t kSmallestPooled = 64 * 1024;

    /// @param patience how long an unused buffer is kept; it is freed within one and a half times that
    explicit BufferPool(std::chrono::milliseconds patience = std::chrono::seconds(2));
    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;
    ~BufferPool(); // NOLINT(bugprone-exception-escape): as in its definition

    /// The pool of the process. It is never destroyed, so that images may outlive all other objects.
    static BufferPool& instance();

    /// Returns a buffer of exactly @p size bytes with undefined content.
    Buffer take(std::size_t size);

    /// Keeps a buffer, or frees it if it is small or the pool is full.
    void giveBack(Buffer buffer) noexcept;

    /// The total size of the kept buffers, in bytes.
    std::size_t keptBytes();

    /// Frees the kept buffers, ends the thread, and keeps no buffers from now on.
    void close();

private:
    struct Kept {
        Buffer buffer;
        std::chrono::steady_clock::time_point since;
    };

    /// Removes a buffer, for use or to free it.
    Buffer removeLocked(std::vector<Kept>::iterator kept) QUILL_REQUIRES(m_Mutex);
    /// Frees buffers that were unused for too long; returns whether any are left.
    bool freeUnused();
    void startFreeing();

    const std::chrono::milliseconds m_Patience;
    Utilities::Mutex m_WatchdogMutex;                   // held while the watchdog is started or stopped
    Utilities::Mutex m_Mutex;                           // guards the following members except the watchdog
    std::vector<Kept> m_Kept QUILL_GUARDED_BY(m_Mutex); // the last one returned at the end
    std::size_t m_KeptBytes QUILL_GUARDED_BY(m_Mutex) = 0;
    bool m_Freeing QUILL_GUARDED_BY(m_Mutex) = false; ///< the watchdog runs, or is about to start
    bool m_Closed QUILL_GUARDED_BY(m_Mutex) = false;
    Utilities::Watchdog m_Watchdog QUILL_GUARDED_BY(m_WatchdogMutex); // the last member, so that it is destroyed first
};

/// A buffer of the pool for intermediate results, returned by the destructor.
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
