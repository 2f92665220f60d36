// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Sensor/ColorFilter.h"

namespace SoftwareDevices {

/// The values are the SDK's.
enum class Demosaic : std::int32_t { None = 0, Fast = 1, HighQuality = 2, HigherQuality = 3, Simple = 8 };

/// Rows give the result's red, green and blue, columns those of the source.
using ColorMatrix = std::array<float, 9>;

/// The parameters that turn a raw frame into a picture.
struct Development {
    Demosaic demosaic = Demosaic::HighQuality; ///< None copies the mosaic into every channel
    ColorMatrix matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
    bool flipX = false;
    bool flipY = false;
};

/// A raw frame as the device delivers it.
struct RawFrame {
    const std::uint8_t* data;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bytesPerSample; ///< the result has the same
    bool bigEndian;               ///< the result has the same
    ColorFormat colorFormat;
    std::uint32_t maximum; ///< largest sample
};

RawFrame rawFrame(const DeviceDescription& description, const std::uint8_t* data, std::uint32_t width,
                  std::uint32_t height, std::uint32_t bytesPerSample);

/// @throws Refusal  the method or the matrix is unknown, or a record's size is wrong
Development developmentOf(const ORVEX_CONVERSION& parameters);
Development developmentOf(const ORVEX_CONVERSION_PARAMS& parameters);

/// Writes the picture with samples like those of the frame.
/// @param channels  1: monochrome, 3: BGR, 4: BGRA
void develop(const RawFrame& frame, std::uint8_t* destination, std::uint32_t channels, const Development& development);

} // namespace SoftwareDevices
