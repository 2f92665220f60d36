// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Streams/StreamCounter.h"

namespace CameraInterface {

/// Why a captured frame could be given to nobody. Streams of packets have the last four reasons as well.
enum class FrameLoss : std::uint8_t {
    Incomplete,
    Refused,
    Undescribed,
    Missed,
    DroppedByCamera,
    MissingPackets,
    TimedOut,
    SizeMismatch,
    Aborted
};

/// What became of the frames of a camera object, over all runs. Each captured frame counts once in one of delivered,
/// turnedAway, unused and the losses. Thread-safe.
struct FrameCounts {
    static constexpr std::size_t kLosses = 9;
    static constexpr std::size_t kLossesWithoutPackets = 5;
    using Losses = std::array<std::uint64_t, kLosses>; ///< by FrameLoss

    std::atomic<std::uint64_t> delivered{0};
    std::atomic<std::uint64_t> turnedAway{0};
    std::atomic<std::uint64_t> unused{0};
    std::array<std::atomic<std::uint64_t>, kLosses> losses{};
    std::atomic<std::uint64_t> incompleteBytesReceived{0};
    std::atomic<std::uint64_t> incompleteBytesExpected{0};
    std::atomic<bool> hasPackets{false}; ///< whether the source is a stream of packets
    std::atomic<std::uint64_t> resentPackets{0};
    std::atomic<std::uint64_t> missingPackets{0};

    /// The losses so far.
    Losses presentLosses() const;
    /// Appends a counter for each reason that the source has.
    void appendLosses(std::vector<StreamCounter>& counters, const Losses& losses) const;
    std::vector<StreamCounter> counters() const;
};

} // namespace CameraInterface
