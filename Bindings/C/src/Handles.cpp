// SPDX-License-Identifier: Apache-2.0

#include "Handles.h"

#include <memory>
#include <random>

#include "Process/Process.h"

namespace CInterface {

HandleTable g_Handles;

HandleTable::Place& HandleTable::append() {
    prepareOnce();
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
        Process::callInForkedChild([] { g_Handles.forgetInForkedChild(); });
        return true;
    }();
    static_cast<void>(isPrepared);
}

} // namespace CInterface
