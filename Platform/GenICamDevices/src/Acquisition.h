// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "Features.h"

namespace GenICamDevices {

using Clock = std::chrono::steady_clock;

/// When frames are taken, and their numbers.
class Acquisition {
public:
    explicit Acquisition(std::uint16_t idStart) : m_IdStart(idStart) {}

    void start(const Features& features, Clock::time_point now);
    void stop() { m_IsActive = false; }
    bool isActive() const { return m_IsActive; }
    /// A number of its own for each acquisition.
    std::uint64_t run() const { return m_Run; }
    /// Frames of the acquisition so far.
    std::uint64_t taken() const { return m_Taken; }

    void trigger(const Features& features, std::uint32_t trigger);

    /// When the next frame is to be taken.
    /// @param stallAfter  frames after which no more come; 0: no limit
    /// @return nothing: not before something changes
    std::optional<Clock::time_point> due(const Features& features, std::uint64_t stallAfter) const;
    /// Takes a frame that is due, the last one of which ends the acquisition.
    /// @return its block id
    std::uint16_t take(const Features& features, Clock::time_point now);

private:
    const std::uint16_t m_IdStart;
    bool m_IsActive = false;
    bool m_WaitsForStart = false; ///< the trigger of the acquisition has not come
    std::uint64_t m_Run = 0;
    std::uint64_t m_Taken = 0;
    std::uint64_t m_Triggers = 0; ///< of frames, not used yet
    std::uint16_t m_NextId = 1;
    Clock::time_point m_Next;
};

} // namespace GenICamDevices
