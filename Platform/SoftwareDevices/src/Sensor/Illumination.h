// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Sensor/FrameGeometry.h"

namespace SoftwareDevices {

/// The light on each pixel that a format delivers, behind its colour filter: 0 .. kFullLight, row by row.
using Illumination = std::vector<std::uint16_t>;

constexpr std::uint32_t kFullLight = (1u << 14) - 1;

/// Projects the scene onto the sensor, and bins (averages) or subsamples (skips) pixels of one colour.
Illumination illuminate(const DeviceDescription& description, const Scene& scene, const ORVEX_FRAME_FORMAT& format);

} // namespace SoftwareDevices
