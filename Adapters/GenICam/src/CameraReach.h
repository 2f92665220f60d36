// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "FoundCamera.h"
#include "NetworkCards.h"

namespace GenICamAdapter {

/// How this computer reaches a camera on the network.
struct CameraReach {
    std::optional<NetworkCard> card; ///< on which the camera was found, or to which the route leads
    CardAddress own;                 ///< this computer's address towards the camera; 0 if it has none
    std::string routeCard;           ///< the card on which packets to the camera leave; empty if there is none
    std::string obstacle;            ///< why the camera cannot be reached, in a sentence; empty if it can
    std::string remedy;              ///< the command line that changes that
};

/// Asks the system; sends nothing.
CameraReach reachOf(const FoundCamera& camera);

/// The same for given cards. @param isDirect  whether the camera's card has a direct route to it
CameraReach reachOf(const FoundCamera& camera, const std::vector<NetworkCard>& cards, const Route& route,
                    bool isDirect);

/// @throws std::runtime_error  why the camera cannot be reached, and what helps
void requireReachable(const FoundCamera& camera);

} // namespace GenICamAdapter
