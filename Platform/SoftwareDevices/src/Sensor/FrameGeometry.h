// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// How a pixel-format code lies in memory.
struct PixelLayout {
    std::uint32_t code;
    std::uint32_t channels; ///< 1: raw samples; 3: BGR; 4: BGR and a filled fourth
    std::uint32_t bytesPerSample;
};

/// @return null for an unknown code
const PixelLayout* findPixelLayout(std::uint32_t code);

/// What a format delivers: the region divided by the sampling factors. On a colour sensor both sides are even, so that
/// whole colour cells arrive.
struct FrameGeometry {
    std::uint32_t width;
    std::uint32_t height;
    PixelLayout layout;

    std::size_t rowBytes() const { return std::size_t{width} * layout.channels * layout.bytesPerSample; }
    std::size_t imageBytes() const { return rowBytes() * height; }
};

/// The whole sensor, in the first accepted pixel format, not sampled.
ORVEX_FRAME_FORMAT wholeSensor(const DeviceDescription& description);

/// @throws Refusal kInvalidFormat  the sensor cannot deliver this
void checkFormat(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format);

/// Of a format that passed checkFormat.
FrameGeometry frameGeometry(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format);

} // namespace SoftwareDevices
