// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Cameras/GenICamNetwork.h"

namespace GenICamAdapter {

/// Reads six hexadecimal bytes with colons or hyphens; nothing for any other text.
std::optional<std::uint64_t> parseHardwareAddress(const std::string& text);

/// How giving a camera an address ended.
struct ForcedResult {
    bool hasMoved = false; ///< it answers at the new address
    std::string refusal;   ///< the camera's words, if it refused
};

/// Gives a camera an address and waits until it answers there: ten seconds at the most.
/// @param cards           names of the cards on which everybody is asked
/// @param presentAddress  an address at which the camera is known to answer; empty if there is none
/// @throws std::system_error  there is no socket
ForcedResult forceOnCards(std::uint64_t hardwareAddress, const CameraInterface::GenICam::NetworkPlace& place,
                          const std::vector<std::string>& cards, const std::string& presentAddress);

} // namespace GenICamAdapter
