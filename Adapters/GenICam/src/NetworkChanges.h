// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Cameras/GenICamNetwork.h"
#include "ControlChannel.h"

namespace GenICamAdapter {

// Changes through a channel that has control of the camera.
// Throws std::runtime_error, with the reason, if the camera refuses, does not answer or takes another value.

void storeAddress(ControlChannel& channel, std::uint32_t supportedConfigurations,
                  const CameraInterface::GenICam::NetworkPlace& place);
void storeAddressMode(ControlChannel& channel, std::uint32_t supportedConfigurations, bool persistent, bool dhcp);
/// @return what the camera took
std::uint32_t writePacketSize(ControlChannel& channel, std::uint32_t bytes);
std::uint64_t writePacketDelay(ControlChannel& channel, std::uint64_t nanoseconds);
std::uint32_t writeHeartbeat(ControlChannel& channel, std::uint32_t milliseconds);

} // namespace GenICamAdapter
