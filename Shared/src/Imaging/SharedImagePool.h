// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "Imaging/BufferPool.h"
#include "Imaging/Image.h"
#include "Utilities/Mutex.h"

namespace Imaging {

/// Makes images that several consumers share, and reuses the memory of those that nobody holds any more, so that a
/// steady sequence of images allocates nothing. Large buffers come from the pool of the process, whatever size an image
/// has. Images keep the pool alive. Thread-safe.
class SharedImagePool : public std::enable_shared_from_this<SharedImagePool> {
public:
    using Buffer = BufferPool::Buffer;

    SharedImagePool();
    SharedImagePool(const SharedImagePool&) = delete;
    SharedImagePool& operator=(const SharedImagePool&) = delete;
    ~SharedImagePool();

    /// Returns a buffer of exactly @p size bytes with undefined content.
    Buffer takeBuffer(std::size_t size);
    /// Takes a buffer back for reuse.
    void giveBack(Buffer buffer) noexcept;

    /// Makes an image; see createImage().
    std::shared_ptr<const Image> makeImage(unsigned width, unsigned height, Buffer data, unsigned bitDepth,
                                           bool littleEndian, IMAGE_FORMAT format);

private:
    template <typename Base>
    class PooledImage;
    template <typename T>
    struct BlockAllocator;
    /// Memory for an image and its count of holders.
    struct Block {
        alignas(std::max_align_t) std::array<std::byte, 256> bytes;
    };

    void* takeBlock();
    void giveBackBlock(void* block) noexcept;

    /// In a forked child, a thread of the parent may hold the mutex for ever.
    bool isOfThisProcess() const;

    const int m_Process;
    Utilities::Mutex m_Mutex; // guards the following members
    std::vector<Buffer> m_SmallBuffers QUILL_GUARDED_BY(m_Mutex);
    std::vector<std::unique_ptr<Block>> m_Blocks QUILL_GUARDED_BY(m_Mutex);
};

} // namespace Imaging
