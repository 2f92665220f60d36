// SPDX-License-Identifier: Apache-2.0

#include "Imaging/SharedImagePool.h"

#include <new>
#include <type_traits>
#include <utility>

#include "Imaging/ImageClasses.h"
#include "Process/Process.h"

namespace Imaging {

using Utilities::MutexLock;

namespace {

/// More frames than these are rarely in use at once; the memory of more is freed.
constexpr std::size_t kMaximumKept = 64;

} // namespace

/// An image that returns its bytes to the pool.
template <typename Base>
class SharedImagePool::PooledImage final : public Base {
public:
    template <typename... Arguments>
    explicit PooledImage(std::shared_ptr<SharedImagePool> pool, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), m_Pool(std::move(pool)) {}
    PooledImage(const PooledImage&) = delete;
    PooledImage& operator=(const PooledImage&) = delete;
    ~PooledImage() override { m_Pool->giveBack(this->releaseData()); }

private:
    const std::shared_ptr<SharedImagePool> m_Pool;
};

template <typename T>
struct SharedImagePool::BlockAllocator {
    using value_type = T;

    explicit BlockAllocator(std::shared_ptr<SharedImagePool> owner) : pool(std::move(owner)) {}
    template <typename Other>
    BlockAllocator(const BlockAllocator<Other>& other) : pool(other.pool) {} // NOLINT(google-explicit-constructor)

    T* allocate(std::size_t count) {
        static_assert(sizeof(T) <= sizeof(Block));
        static_assert(alignof(T) <= alignof(Block));
        if (count != 1) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(pool->takeBlock());
    }
    void deallocate(T* object, std::size_t /*count*/) noexcept { pool->giveBackBlock(object); }

    bool operator==(const BlockAllocator& other) const { return pool == other.pool; }
    bool operator!=(const BlockAllocator& other) const { return !(*this == other); }

    std::shared_ptr<SharedImagePool> pool;
};

SharedImagePool::SharedImagePool() : m_Process(Process::number()) {
    m_SmallBuffers.reserve(kMaximumKept); // so that taking back never allocates
    m_Blocks.reserve(kMaximumKept);
}

SharedImagePool::~SharedImagePool() = default;

SharedImagePool::Buffer SharedImagePool::takeBuffer(std::size_t size) {
    if (size >= BufferPool::kSmallestPooled) {
        return BufferPool::instance().take(size);
    }
    Buffer buffer;
    if (isOfThisProcess()) {
        const MutexLock lock(m_Mutex);
        if (!m_SmallBuffers.empty()) {
            buffer = std::move(m_SmallBuffers.back());
            m_SmallBuffers.pop_back();
        }
    }
    buffer.resize(size);
    return buffer;
}

void SharedImagePool::giveBack(Buffer buffer) noexcept {
    if (buffer.capacity() >= BufferPool::kSmallestPooled) {
        BufferPool::instance().giveBack(std::move(buffer));
        return;
    }
    if (!isOfThisProcess()) {
        return;
    }
    const MutexLock lock(m_Mutex);
    if (buffer.capacity() != 0 && m_SmallBuffers.size() < kMaximumKept) {
        m_SmallBuffers.push_back(std::move(buffer));
    }
}

std::shared_ptr<const Image> SharedImagePool::makeImage(unsigned width, unsigned height, Buffer data, unsigned bitDepth,
                                                        bool littleEndian, IMAGE_FORMAT format) {
    return withImageClass(format, [&](auto* imageClass, auto... layout) -> std::shared_ptr<const Image> {
        using Kind = PooledImage<std::remove_pointer_t<decltype(imageClass)>>;
        return std::allocate_shared<Kind>(BlockAllocator<Kind>(shared_from_this()), shared_from_this(), width, height,
                                          std::move(data), bitDepth, littleEndian, layout...);
    });
}

void* SharedImagePool::takeBlock() {
    if (isOfThisProcess()) {
        const MutexLock lock(m_Mutex);
        if (!m_Blocks.empty()) {
            Block* const block = m_Blocks.back().release();
            m_Blocks.pop_back();
            return block;
        }
    }
    return new Block;
}

void SharedImagePool::giveBackBlock(void* block) noexcept {
    std::unique_ptr<Block> own(static_cast<Block*>(block));
    if (!isOfThisProcess()) {
        return;
    }
    const MutexLock lock(m_Mutex);
    if (m_Blocks.size() < kMaximumKept) {
        m_Blocks.push_back(std::move(own));
    }
}

bool SharedImagePool::isOfThisProcess() const {
    return m_Process == Process::number();
}

} // namespace Imaging
