// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Streams/StreamCounter.h"

namespace CameraInterface {

/// Why a captured frame could be given to nobody.
enum class FrameLoss : std::uint8_t { Incomplete, Refused, Undescribed, Missed, DroppedByCamera };

/// What became of the frames of a camera object, over all runs. Each captured frame counts once in one of delivered,
/// turnedAway, unused and the losses. Thread-safe.
struct FrameCounts {
    static constexpr std::size_t kLosses = 5;
    using Losses = std::array<std::uint64_t, kLosses>; ///< by FrameLoss

    std::atomic<std::uint64_t> delivered{0};
    std::atomic<std::uint64_t> turnedAway{0};
    std::atomic<std::uint64_t> unused{0};
    std::array<std::atomic<std::uint64_t>, kLosses> losses{};
    std::atomic<std::uint64_t> incompleteBytesReceived{0};
    std::atomic<std::uint64_t> incompleteBytesExpected{0};

    /// The losses so far.
    Losses presentLosses() const;
    /// Appends a counter for each reason.
    static void appendLosses(std::vector<StreamCounter>& counters, const Losses& losses);
    std::vector<StreamCounter> counters() const;
};

} // namespace CameraInterface
