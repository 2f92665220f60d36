// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "Imaging/ImageFormat.h"

namespace Imaging {

/// The arrangement of an image's samples, which determines its class.
enum class Layout { Grey, Mosaic, Interleaved, Planar };

/// The characteristics of a pixel format.
struct FormatDescription {
    const char* name;
    Layout layout;
    unsigned channels;
    unsigned planes;
    /// The pixel channel of sample k of a pixel; for a mosaic, of the sites (even, even), (even, odd), (odd, even),
    /// (odd, odd).
    std::array<std::uint8_t, 4> channelOfSample;

    /// Samples per pixel in memory.
    constexpr unsigned samplesPerPixel() const {
        return layout == Layout::Interleaved || layout == Layout::Planar ? channels : 1;
    }
};

/// One row per IMAGE_FORMAT, in the order of its numbers.
inline constexpr std::array<FormatDescription, 13> kFormats{{
    {"MONO", Layout::Grey, 1, 1, {0, 0, 0, 0}},
    {"BAYER_RGGB", Layout::Mosaic, 4, 1, {0, 1, 2, 3}},
    {"BAYER_GRBG", Layout::Mosaic, 4, 1, {1, 0, 3, 2}},
    {"BAYER_GBRG", Layout::Mosaic, 4, 1, {1, 3, 0, 2}},
    {"BAYER_BGGR", Layout::Mosaic, 4, 1, {3, 1, 2, 0}},
    {"RGB", Layout::Interleaved, 3, 1, {0, 1, 2, 3}},
    {"RGBA", Layout::Interleaved, 4, 1, {0, 1, 2, 3}},
    {"BGR", Layout::Interleaved, 3, 1, {2, 1, 0, 3}},
    {"BGRA", Layout::Interleaved, 4, 1, {2, 1, 0, 3}},
    {"RGB_PLANAR", Layout::Planar, 3, 3, {0, 1, 2, 3}},
    {"RGBA_PLANAR", Layout::Planar, 4, 4, {0, 1, 2, 3}},
    {"BGR_PLANAR", Layout::Planar, 3, 3, {2, 1, 0, 3}},
    {"BGRA_PLANAR", Layout::Planar, 4, 4, {2, 1, 0, 3}},
}};
static_assert(kFormats.size() == static_cast<std::size_t>(IMAGE_FORMAT::BGRA_PLANAR) + 1);

/// The row of a format, or null for an invalid number.
const FormatDescription* findDescription(IMAGE_FORMAT format);

/// The row of a format.
/// @throws std::runtime_error "Invalid image format."
const FormatDescription& describe(IMAGE_FORMAT format);

/// The row of a format that must have this layout.
/// @throws std::runtime_error "Invalid image format."
const FormatDescription& describe(IMAGE_FORMAT format, Layout layout);

} // namespace Imaging
