// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

#include "Conformance/Subject.h"

namespace QuillTool::Conformance {

/// The history of a camera.
enum class State {
    NeverConnected,
    Connected,
    StreamingVideo,
    StreamingStill,
    Suspended,
    SuspendedStreaming, ///< a stream was started after the suspension
    Disconnected,
    Unplugged,          ///< while it was connected; the library has not noticed
    UnpluggedStreaming, ///< the same, while it was streaming
    Retired,            ///< unplugged and dropped from the list
    Ended               ///< unitialisedWorkpace() has returned: no camera exists
};

constexpr std::size_t kStateCount = static_cast<std::size_t>(State::Ended) + 1;

struct StateDescription {
    State state;
    const char* name; ///< the heading of its column
    bool needsStream;
    bool needsPlug;
    /// Brings a renewed camera to the state.
    void (*enter)(Subject& subject);

    bool isPossible(const Subject& subject) const;
};

/// All states, indexed by State.
const std::array<StateDescription, kStateCount>& allStates();

} // namespace QuillTool::Conformance
