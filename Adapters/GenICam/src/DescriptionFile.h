// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ControlChannel.h"

namespace GenICamAdapter {

/// Fetches the description of a camera's features from the camera itself, expands it if it is zipped, and checks it.
/// @return an XML document that Aravis can take
/// @throws std::runtime_error  there is none, it is broken, too large or harmful, or the channel's deadline passes
std::string fetchDescription(ControlChannel& channel);

} // namespace GenICamAdapter
