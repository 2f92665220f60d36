// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameCounts.h"

namespace CameraInterface {

namespace {

struct LossText {
    const char* name;
    const char* description;
};

/// By FrameLoss.
constexpr std::array<LossText, FrameCounts::kLosses> kLossTexts{{
    {"Incomplete", "Frames of which bytes were missing, or that were larger than the region."},
    {"Refused", "Captures that the camera refused."},
    {"Undescribed", "Frames of which the camera could not tell what their bytes mean."},
    {"Missed", "Frames that came while the library took none: a queue held it back, or the computer was too busy."},
    {"Dropped by Camera", "Frames that the camera, or its connection, dropped according to its own statistics."},
}};

} // namespace

std::array<std::uint64_t, FrameCounts::kLosses> FrameCounts::presentLosses() const {
    std::array<std::uint64_t, kLosses> present{};
    for (std::size_t i = 0; i < kLosses; ++i) {
        present[i] = losses[i];
    }
    return present;
}

void FrameCounts::appendLosses(std::vector<StreamCounter>& counters,
                               const std::array<std::uint64_t, kLosses>& before) const {
    const std::array<std::uint64_t, kLosses> present = presentLosses();
    for (std::size_t i = 0; i < kLosses; ++i) {
        counters.push_back({kLossTexts[i].name, present[i] - before[i], kLossTexts[i].description, true});
    }
}

std::vector<StreamCounter> FrameCounts::counters() const {
    std::vector<StreamCounter> counters{
        {"Captured", captured, "Frames that the camera captured: the sum of the next eight."},
        {"Delivered", delivered, "Frames given to at least one queue, or to a caller that waited for an image."},
        {"Turned Away", turnedAway, "Frames that every queue dropped on arrival because it was full.", true},
        {"Unused", unused, "Whole frames that nobody wanted: no queue was open, and no caller waited."},
    };
    appendLosses(counters, {});
    counters.push_back(
        {"Incomplete Bytes Received", incompleteBytesReceived, "Bytes of incomplete frames that were received."});
    counters.push_back({"Incomplete Bytes Expected", incompleteBytesExpected, "Bytes that incomplete frames have."});
    return counters;
}

} // namespace CameraInterface
