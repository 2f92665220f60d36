// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Camera/Session.h"
#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// Returns the region of the sensor that a camera delivers, its units and the size of the sensor.
/// @throws Refusal  404 "RegionNotSupported"
Json readRegion(const SelectedCamera& camera);
/// Sets the region nearest to the wanted one that the camera can deliver; stops a running stream meanwhile.
/// @param wanted  "x", "y", "width" and "height" in pixels
/// @throws Refusal  as readRegion(), 400 a member is missing or no whole number
Json writeRegion(const SelectedCamera& camera, const Json& wanted);

} // namespace QuillTool::Serve
