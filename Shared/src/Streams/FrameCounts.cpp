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
    {"Undescribed", "Frames whose layout the camera did not describe."},
    {"Missed", "Frames that came while the library took none: a queue held it back, or the computer was too busy."},
    {"Dropped by Camera", "Frames that the camera, or its connection, dropped according to its own numbers."},
    {"Missing Packets", "Frames of which packets were missing, also after they were asked for again."},
    {"Timed Out", "Frames whose packets did not all come in time."},
    {"Size Mismatch", "Frames whose size is not the one that the camera announced."},
    {"Aborted", "Frames whose reception was ended by the end of the run."},
}};

} // namespace

FrameCounts::Losses FrameCounts::presentLosses() const {
    Losses present{};
    for (std::size_t i = 0; i < kLosses; ++i) {
        present[i] = losses[i];
    }
    return present;
}

void FrameCounts::appendLosses(std::vector<StreamCounter>& counters, const Losses& losses) const {
    for (std::size_t i = 0; i < (hasPackets ? kLosses : kLossesWithoutPackets); ++i) {
        counters.push_back({kLossTexts[i].name, losses[i], kLossTexts[i].description, true});
    }
}

std::vector<StreamCounter> FrameCounts::counters() const {
    std::vector<StreamCounter> counters{
        {"Captured", 0,
         "Frames that the camera captured, and captures that it refused: the sum of the following counters of frames."},
        {"Delivered", delivered, "Frames given to at least one queue, or to a caller that waited for an image."},
        {"Turned Away", turnedAway, "Frames that every open queue dropped on arrival.", true},
        {"Unused", unused, "Whole frames that nobody wanted: no queue was open, and no caller waited."},
    };
    appendLosses(counters, presentLosses());
    std::uint64_t captured = 0;
    for (const StreamCounter& part : counters) {
        captured += part.value;
    }
    counters.front().value = captured;
    counters.push_back(
        {"Incomplete Bytes Received", incompleteBytesReceived, "Bytes of incomplete frames that were received."});
    counters.push_back({"Incomplete Bytes Expected", incompleteBytesExpected, "Bytes that incomplete frames have."});
    if (hasPackets) {
        counters.push_back({"Resent Packets", resentPackets, "Packets that the camera sent again when asked."});
        counters.push_back({"Lost Packets", missingPackets, "Packets that never came."});
    }
    return counters;
}

} // namespace CameraInterface
