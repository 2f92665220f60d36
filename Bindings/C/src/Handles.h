// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace CInterface {

enum class HandleKind : std::uint8_t { None, Camera, FrameQueue, Frame, Image };

/// What a handle stands for. Concrete classes have their HandleKind as kKind.
class HandledObject {
public:
    HandledObject() = default;
    HandledObject(const HandledObject&) = delete;
    HandledObject& operator=(const HandledObject&) = delete;
    virtual ~HandledObject() = default;
};

/// The objects behind handles. A handle's id has the place of its object, the object's kind, and a generation that
/// changes with every use of the place. Thread-safe, without locks, so that nothing is held when a process forks.
///
/// A place counts those who use its object: the handle itself while it is open, and every call. The last one destroys
/// the object, outside of every lock.
class HandleTable {
public:
    class Place;

    constexpr HandleTable() = default;
    HandleTable(const HandleTable&) = delete;
    HandleTable& operator=(const HandleTable&) = delete;

    /// Constructs an object.
    /// @return the id of its handle
    /// @throws std::bad_alloc  no memory, or too many handles
    template <typename T, typename... Arguments>
    std::uint64_t create(Arguments&&... arguments);

    /// Begins the use of an open handle's object.
    /// @return null if the handle is not open, or of another kind
    Place* acquire(std::uint64_t id, HandleKind kind);
    void release(Place& place);
    /// Ends the handle; its object goes with its last user.
    /// @return false if the handle is not open, or of another kind
    bool close(std::uint64_t id, HandleKind kind);

private:
    static constexpr std::size_t kPlacesOfChunk = 256;
    static constexpr std::size_t kChunks = 4096;

    Place& reserve();
    std::uint64_t open(Place& place, HandleKind kind);
    void giveBack(Place& place);
    Place* find(std::uint64_t id) const;
    Place& at(std::size_t index) const;
    void forgetInForkedChild();
    void prepareOnce();

    std::array<std::atomic<Place*>, kChunks> m_Chunks{}; // never freed
    std::atomic<std::uint32_t> m_PlaceCount{0};
    std::atomic<std::uint64_t> m_Free{0}; // the first free place's index + 1; above it, a count against reuse
    std::uint32_t m_FirstGeneration = 0;  // differs from process to process
};

/// The one table; never destroyed.
HandleTable& handles();

/// A place for an object of any kind.
class HandleTable::Place {
public:
    template <typename T>
    T& as() {
        return *std::launder(reinterpret_cast<T*>(m_Storage.data()));
    }

private:
    friend class HandleTable;

    template <typename T, typename... Arguments>
    void construct(Arguments&&... arguments) {
        static_assert(sizeof(T) <= kLargest && alignof(T) <= alignof(std::max_align_t));
        ::new (m_Storage.data()) T(std::forward<Arguments>(arguments)...);
    }

    static constexpr std::size_t kLargest = 192;

    std::atomic<std::uint64_t> m_State{0}; // generation, kind, whether the handle is open, number of users
    std::atomic<std::uint32_t> m_Next{0};  // the next free place's index + 1
    std::uint32_t m_Index = 0;
    alignas(std::max_align_t) std::array<unsigned char, kLargest> m_Storage;
};

template <typename T, typename... Arguments>
std::uint64_t HandleTable::create(Arguments&&... arguments) {
    Place& place = reserve();
    try {
        place.construct<T>(std::forward<Arguments>(arguments)...);
    } catch (...) {
        giveBack(place);
        throw;
    }
    return open(place, T::kKind);
}

/// A handle that cannot be used.
class InvalidHandle {};

/// Keeps the object of a handle for its own lifetime.
template <typename T>
class Use {
public:
    /// @throws InvalidHandle
    explicit Use(std::uint64_t id) : m_Place(handles().acquire(id, T::kKind)) {
        if (m_Place == nullptr) {
            throw InvalidHandle();
        }
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { handles().release(*m_Place); }

    T* operator->() const { return &m_Place->as<T>(); }
    T& operator*() const { return m_Place->as<T>(); }

private:
    HandleTable::Place* m_Place;
};

/// @throws InvalidHandle
template <typename T>
void closeHandle(std::uint64_t id) {
    if (!handles().close(id, T::kKind)) {
        throw InvalidHandle();
    }
}

} // namespace CInterface
