// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// The memory layout of a pixel-format code.
struct PixelLayout {
    std::uint32_t code;
    std::uint32_t channels; ///< 1: raw samples; 3: BGR; 4: BGR and a constant fourth
    std::uint32_t bytesPerSample;
};

/// @return null for an unknown code
const PixelLayout* findPixelLayout(std::uint32_t code);

/// The frames of a format: the region divided by the sampling factors. On a colour sensor both sides are even, so that
/// frames consist of whole colour cells.
struct FrameGeometry {
    std::uint32_t width;
    std::uint32_t height;
    PixelLayout layout;

    std::size_t rowBytes() const { return std::size_t{width} * layout.channels * layout.bytesPerSample; }
    std::size_t imageBytes() const { return rowBytes() * height; }
};

/// The whole sensor in the first accepted pixel format, without sampling.
ORVEX_FRAME_FORMAT wholeSensor(const DeviceDescription& description);

/// @throws Refusal kInvalidFormat  the sensor cannot deliver this format
void checkFormat(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format);

/// The geometry of a format that passed checkFormat().
FrameGeometry frameGeometry(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format);

} // namespace SoftwareDevices
