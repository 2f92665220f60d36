// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "CameraReach.h"
#include "Cameras/GenICamNetwork.h"

namespace GenICamAdapter {

/// Packets of one size, with their headers, that a camera was asked to send.
struct TestedSize {
    std::uint32_t bytes = 0;
    bool hasArrived = false;
};

/// What was measured of the link to one camera.
struct LinkFigures {
    std::string serialNumber;
    std::string address; ///< of the camera
    CameraReach reach;
    std::optional<std::uint32_t> cameraSpeedMbps;

    std::size_t receiveBuffer = 0; ///< bytes that a socket of this program gets at the most
    bool wantsPacketSocket = false;
    bool mayUsePacketSocket = false;
    std::string program; ///< its file

    std::vector<double> roundTripsUs; ///< of the control packets that were answered, in microseconds
    unsigned lostRoundTrips = 0;

    std::string whyNotTested;      ///< why there were no test packets, as a sentence; empty if there were
    std::vector<TestedSize> sizes; ///< in ascending order
    std::uint32_t packetSize = 0;  ///< of the camera at present; 0 if unknown
    std::uint32_t largestSize = 0; ///< that the camera takes; 0 if unknown
};

/// Judges the figures, in the order in which the faults are to be mended.
std::vector<CameraInterface::GenICam::LinkFinding> judgeLink(const LinkFigures& figures);

} // namespace GenICamAdapter
