// SPDX-License-Identifier: Apache-2.0

#include "Handles.h"

#include <memory>
#include <random>
#include <system_error>

#include <pthread.h>

namespace CInterface {

namespace {

// An id, from the lowest bit: 24 bits index, 8 bits kind, 32 bits generation. A state: 27 bits users, 1 bit whether the
// handle is open, 4 bits kind, 32 bits generation.
constexpr int kGenerationShift = 32;
constexpr int kKindShiftOfId = 24;
constexpr int kKindShiftOfState = 28;
constexpr std::uint64_t kIndexMask = (1U << kKindShiftOfId) - 1;
constexpr std::uint64_t kOpen = 1U << 27;
constexpr std::uint64_t kUsers = kOpen - 1;
constexpr std::uint64_t kIndexOfFree = 0xFFFFFFFF;

HandleTable g_Table;

HandleKind kindOf(std::uint64_t id) {
    return static_cast<HandleKind>(id >> kKindShiftOfId & 0xFF);
}

/// The state of the open handle's place, without its users.
std::uint64_t openState(std::uint64_t generation, HandleKind kind) {
    return generation << kGenerationShift | static_cast<std::uint64_t>(kind) << kKindShiftOfState | kOpen;
}

} // namespace

HandleTable& handles() {
    return g_Table;
}

HandleTable::Place* HandleTable::acquire(std::uint64_t id, HandleKind kind) {
    Place* const place = find(id);
    if (place == nullptr || kindOf(id) != kind) {
        return nullptr;
    }
    const std::uint64_t wanted = openState(id >> kGenerationShift, kind);
    std::uint64_t state = place->m_State.load(std::memory_order_relaxed);
    do {
        if ((state & ~kUsers) != wanted) {
            return nullptr;
        }
    } while (
        !place->m_State.compare_exchange_weak(state, state + 1, std::memory_order_acquire, std::memory_order_relaxed));
    return place;
}

void HandleTable::release(Place& place) {
    const std::uint64_t before = place.m_State.fetch_sub(1, std::memory_order_acq_rel);
    if ((before & (kOpen | kUsers)) == 1) {
        place.as<HandledObject>().~HandledObject();
        giveBack(place);
    }
}

bool HandleTable::close(std::uint64_t id, HandleKind kind) {
    Place* const place = find(id);
    if (place == nullptr || kindOf(id) != kind) {
        return false;
    }
    const std::uint64_t wanted = openState(id >> kGenerationShift, kind);
    std::uint64_t state = place->m_State.load(std::memory_order_relaxed);
    do {
        if ((state & ~kUsers) != wanted) {
            return false;
        }
    } while (!place->m_State.compare_exchange_weak(state, (state & ~kOpen) - 1, std::memory_order_acq_rel,
                                                   std::memory_order_relaxed));
    if ((state & kUsers) == 1) {
        place->as<HandledObject>().~HandledObject();
        giveBack(*place);
    }
    return true;
}

HandleTable::Place& HandleTable::reserve() {
    prepareOnce();
    std::uint64_t first = m_Free.load(std::memory_order_acquire);
    while ((first & kIndexOfFree) != 0) {
        Place& place = at((first & kIndexOfFree) - 1);
        const std::uint64_t count = (first >> kGenerationShift) + 1;
        const std::uint64_t next = count << kGenerationShift | place.m_Next.load(std::memory_order_relaxed);
        if (m_Free.compare_exchange_weak(first, next, std::memory_order_acquire)) {
            return place;
        }
    }
    std::uint32_t index = m_PlaceCount.load(std::memory_order_relaxed);
    do {
        if (index >= kChunks * kPlacesOfChunk) {
            throw std::bad_alloc();
        }
        std::atomic<Place*>& chunk = m_Chunks[index / kPlacesOfChunk];
        if (chunk.load(std::memory_order_acquire) == nullptr) {
            auto made = std::make_unique<Place[]>(kPlacesOfChunk);
            for (std::size_t i = 0; i < kPlacesOfChunk; ++i) {
                made[i].m_Index = static_cast<std::uint32_t>(index - index % kPlacesOfChunk + i);
                made[i].m_State = std::uint64_t{m_FirstGeneration} << kGenerationShift;
            }
            Place* none = nullptr;
            if (chunk.compare_exchange_strong(none, made.get(), std::memory_order_release)) {
                static_cast<void>(made.release());
            }
        }
    } while (!m_PlaceCount.compare_exchange_weak(index, index + 1, std::memory_order_acq_rel));
    return at(index);
}

std::uint64_t HandleTable::open(Place& place, HandleKind kind) {
    const std::uint64_t generation = place.m_State.load(std::memory_order_relaxed) >> kGenerationShift;
    place.m_State.store(openState(generation, kind) | 1, std::memory_order_release);
    return generation << kGenerationShift | static_cast<std::uint64_t>(kind) << kKindShiftOfId | place.m_Index;
}

void HandleTable::giveBack(Place& place) {
    const std::uint64_t generation = place.m_State.load(std::memory_order_relaxed) >> kGenerationShift;
    place.m_State.store((generation + 1) << kGenerationShift, std::memory_order_relaxed);
    std::uint64_t first = m_Free.load(std::memory_order_relaxed);
    std::uint64_t mine = 0;
    do {
        place.m_Next.store(static_cast<std::uint32_t>(first), std::memory_order_relaxed);
        mine = ((first >> kGenerationShift) + 1) << kGenerationShift | (place.m_Index + 1);
    } while (!m_Free.compare_exchange_weak(first, mine, std::memory_order_release, std::memory_order_relaxed));
}

HandleTable::Place* HandleTable::find(std::uint64_t id) const {
    const std::uint64_t index = id & kIndexMask;
    return index < m_PlaceCount.load(std::memory_order_acquire) ? &at(index) : nullptr;
}

HandleTable::Place& HandleTable::at(std::size_t index) const {
    return m_Chunks[index / kPlacesOfChunk].load(std::memory_order_acquire)[index % kPlacesOfChunk];
}

void HandleTable::forgetInForkedChild() {
    for (std::size_t i = 0; i < m_PlaceCount; ++i) {
        std::atomic<std::uint64_t>& state = at(i).m_State;
        const auto kind = static_cast<HandleKind>(state >> kKindShiftOfState & 0xF);
        if (kind == HandleKind::Camera || kind == HandleKind::FrameQueue) {
            // Neither destroyed nor used again: the parent's threads may have been inside.
            state = ((state >> kGenerationShift) + 1) << kGenerationShift;
        }
    }
}

void HandleTable::prepareOnce() {
    static const bool isPrepared = [this] {
        m_FirstGeneration = std::random_device()();
        if (const int error = pthread_atfork(nullptr, nullptr, [] { g_Table.forgetInForkedChild(); })) {
            throw std::system_error(error, std::generic_category());
        }
        return true;
    }();
    static_cast<void>(isPrepared);
}

} // namespace CInterface
