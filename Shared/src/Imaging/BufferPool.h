// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

#include "Utilities/Mutex.h"
#include "Utilities/Watchdog.h"

namespace Imaging {

/// Keeps the byte vectors of destroyed images for the next ones: fresh memory costs page faults and a zero fill that a
/// conversion overwrites at once. What nobody takes for a while is freed: a thread looks after that as long as
/// something is kept. AddressSanitizer reports whoever touches what is kept. Thread-safe.
class BufferPool {
public:
    using Buffer = std::vector<unsigned char>;

    /// @param patience how long a buffer is kept that nobody takes; it is freed within one and a half times that
    explicit BufferPool(std::chrono::milliseconds patience = std::chrono::seconds(2));
    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;
    ~BufferPool();

    /// The pool of the process. It is never destroyed, so that images may outlive everything else.
    static BufferPool& instance();

    /// A buffer of exactly @p size bytes, whose content is not defined.
    Buffer take(std::size_t size);

    /// Keeps a buffer, or frees it where it is small or the pool is full.
    void giveBack(Buffer buffer) noexcept;

    /// Bytes of all buffers that are kept.
    std::size_t keptBytes();

    /// Frees what is kept, ends the thread, and keeps nothing from now on.
    void close();

private:
    struct Kept {
        Buffer buffer;
        std::chrono::steady_clock::time_point since;
    };

    /// Takes a buffer out for use, or to free it.
    Buffer removeLocked(std::vector<Kept>::iterator kept) QUILL_REQUIRES(m_Mutex);
    /// Frees what nobody took for too long; whether anything is left.
    bool freeUnused();
    void startFreeing();

    const std::chrono::milliseconds m_Patience;
    Utilities::Mutex m_WatchdogMutex;                   // held while the watchdog is started or stopped
    Utilities::Mutex m_Mutex;                           // guards what follows, but for the watchdog
    std::vector<Kept> m_Kept QUILL_GUARDED_BY(m_Mutex); // the one that was given back last at the end
    std::size_t m_KeptBytes QUILL_GUARDED_BY(m_Mutex) = 0;
    bool m_Freeing QUILL_GUARDED_BY(m_Mutex) = false; ///< the watchdog runs, or is about to
    bool m_Closed QUILL_GUARDED_BY(m_Mutex) = false;
    Utilities::Watchdog m_Watchdog QUILL_GUARDED_BY(m_WatchdogMutex); // the last member, so that it ends first
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
