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

    // An id, from the lowest bit: 24 bits index, 8 bits kind, 32 bits generation. A state: 27 bits users, 1 bit whether
    // the handle is open, 4 bits kind, 32 bits generation.
    static constexpr int kGenerationShift = 32;
    static constexpr int kKindShiftOfId = 24;
    static constexpr int kKindShiftOfState = 28;
    static constexpr std::uint64_t kIndexMask = (1U << kKindShiftOfId) - 1;
    static constexpr std::uint64_t kOpen = 1U << 27;
    static constexpr std::uint64_t kUsers = kOpen - 1;
    static constexpr std::uint64_t kIndexOfFree = 0xFFFFFFFF;

    /// The state of an open handle's place, without its users.
    static std::uint64_t openState(std::uint64_t generation, HandleKind kind) {
        return generation << kGenerationShift | static_cast<std::uint64_t>(kind) << kKindShiftOfState | kOpen;
    }

    /// Changes the state of an open handle's place.
    /// @param change  makes the new state from the old one
    /// @return null if the handle is not open, or of another kind
    template <typename Change>
    Place* changeOpen(std::uint64_t id, HandleKind kind, Change change);
    Place& reserve();
    Place& append();
    void destroy(Place& place);
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
extern HandleTable g_Handles;
inline HandleTable& handles() {
    return g_Handles;
}

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
        static_assert(sizeof(T) <= kLargest);
        ::new (m_Storage.data()) T(std::forward<Arguments>(arguments)...);
    }

    static constexpr std::size_t kLargest = 192;

    std::atomic<std::uint64_t> m_State{0}; // generation, kind, whether the handle is open, number of users
    std::atomic<std::uint32_t> m_Next{0};  // the next free place's index + 1
    std::uint32_t m_Index = 0;
    alignas(std::max_align_t) std::array<unsigned char, kLargest> m_Storage;
};

inline HandleTable::Place& HandleTable::at(std::size_t index) const {
    return m_Chunks[index / kPlacesOfChunk].load(std::memory_order_acquire)[index % kPlacesOfChunk];
}

template <typename Change>
HandleTable::Place* HandleTable::changeOpen(std::uint64_t id, HandleKind kind, Change change) {
    const std::uint64_t index = id & kIndexMask;
    if (index >= m_PlaceCount.load(std::memory_order_acquire) ||
        (id >> kKindShiftOfId & 0xFF) != static_cast<std::uint64_t>(kind)) {
        return nullptr;
    }
    Place& place = at(index);
    const std::uint64_t wanted = openState(id >> kGenerationShift, kind);
    std::uint64_t state = place.m_State.load(std::memory_order_relaxed);
    do {
        if ((state & ~kUsers) != wanted) {
            return nullptr;
        }
    } while (!place.m_State.compare_exchange_weak(state, change(state), std::memory_order_acq_rel,
                                                  std::memory_order_relaxed));
    return &place;
}

inline HandleTable::Place* HandleTable::acquire(std::uint64_t id, HandleKind kind) {
    return changeOpen(id, kind, [](std::uint64_t state) { return state + 1; });
}

inline void HandleTable::release(Place& place) {
    const std::uint64_t before = place.m_State.fetch_sub(1, std::memory_order_acq_rel);
    if ((before & (kOpen | kUsers)) == 1) {
        destroy(place);
    }
}

inline bool HandleTable::close(std::uint64_t id, HandleKind kind) {
    bool isLast = false;
    Place* const place = changeOpen(id, kind, [&isLast](std::uint64_t state) {
        isLast = (state & kUsers) == 1;
        return (state & ~kOpen) - 1;
    });
    if (place != nullptr && isLast) {
        destroy(*place);
    }
    return place != nullptr;
}

inline void HandleTable::destroy(Place& place) {
    place.as<HandledObject>().~HandledObject();
    giveBack(place);
}

inline HandleTable::Place& HandleTable::reserve() {
    std::uint64_t first = m_Free.load(std::memory_order_acquire);
    while ((first & kIndexOfFree) != 0) {
        Place& place = at((first & kIndexOfFree) - 1);
        const std::uint64_t count = (first >> kGenerationShift) + 1;
        const std::uint64_t next = count << kGenerationShift | place.m_Next.load(std::memory_order_relaxed);
        if (m_Free.compare_exchange_weak(first, next, std::memory_order_acquire)) {
            return place;
        }
    }
    return append();
}

inline std::uint64_t HandleTable::open(Place& place, HandleKind kind) {
    const std::uint64_t generation = place.m_State.load(std::memory_order_relaxed) >> kGenerationShift;
    place.m_State.store(openState(generation, kind) | 1, std::memory_order_release);
    return generation << kGenerationShift | static_cast<std::uint64_t>(kind) << kKindShiftOfId | place.m_Index;
}

inline void HandleTable::giveBack(Place& place) {
    const std::uint64_t generation = place.m_State.load(std::memory_order_relaxed) >> kGenerationShift;
    place.m_State.store((generation + 1) << kGenerationShift, std::memory_order_relaxed);
    std::uint64_t first = m_Free.load(std::memory_order_relaxed);
    std::uint64_t mine = 0;
    do {
        place.m_Next.store(static_cast<std::uint32_t>(first), std::memory_order_relaxed);
        mine = ((first >> kGenerationShift) + 1) << kGenerationShift | (place.m_Index + 1);
    } while (!m_Free.compare_exchange_weak(first, mine, std::memory_order_release, std::memory_order_relaxed));
}

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
