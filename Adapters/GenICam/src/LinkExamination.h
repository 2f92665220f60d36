// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ControlChannel.h"
#include "LinkFindings.h"

namespace GenICamAdapter {

/// Measures what needs neither the camera's answer nor control of it.
void measureComputer(LinkFigures& figures);

/// Measures round trips of control packets, on a socket of its own. @throws std::system_error  no way leads there
void measureRoundTrips(LinkFigures& figures);

/// Has the camera send test packets, and sets its registers back. Not done while the camera streams.
/// @param channel  has control of the camera
void measureTestPackets(LinkFigures& figures, ControlChannel& channel);

} // namespace GenICamAdapter
