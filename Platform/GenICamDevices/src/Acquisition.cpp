// SPDX-License-Identifier: Apache-2.0

#include "Acquisition.h"

#include <algorithm>

namespace GenICamDevices {

void Acquisition::start(const Features& features, Clock::time_point now) {
    m_IsActive = true;
    m_WaitsForStart = features.waitsForTrigger(kAcquisitionTrigger);
    ++m_Run;
    m_Taken = 0;
    m_Triggers = 0;
    m_NextId = m_IdStart;
    m_Next = now;
}

void Acquisition::trigger(const Features& features, std::uint32_t trigger) {
    if (!m_IsActive || !features.acceptsSoftwareTrigger(trigger)) {
        return;
    }
    if (trigger == kAcquisitionTrigger) {
        m_WaitsForStart = false;
    } else if (!m_WaitsForStart) {
        ++m_Triggers;
    }
}

std::optional<Clock::time_point> Acquisition::due(const Features& features, std::uint64_t stallAfter) const {
    const bool isStalled = stallAfter != 0 && m_Taken >= stallAfter;
    const bool lacksTrigger = m_WaitsForStart || (features.waitsForTrigger(kFrameTrigger) && m_Triggers == 0);
    return m_IsActive && !isStalled && !lacksTrigger ? std::optional(m_Next) : std::nullopt;
}

std::uint16_t Acquisition::take(const Features& features, Clock::time_point now) {
    const std::uint16_t id = m_NextId;
    m_NextId = id == UINT16_MAX ? 1 : static_cast<std::uint16_t>(id + 1); // no frame has number 0
    ++m_Taken;
    if (m_Triggers > 0) {
        --m_Triggers;
    }
    if (const auto rate = features.frameRate()) {
        const auto period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / *rate));
        m_Next = std::max(m_Next + period, now); // a frame that was late does not make the next one early
    } else {
        m_Next = now;
    }
    if (const auto limit = features.frameLimit(); limit && m_Taken >= *limit) {
        m_IsActive = false;
    }
    return id;
}

} // namespace GenICamDevices
