// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "../Export.h"

namespace Imaging {

/// The pixel layout of an image. The numbers are part of the interface: conversion keys are composed of them.
enum class IMAGE_FORMAT {
    MONO = 0,         ///< one grey sample per pixel
    BAYER_RGGB = 1,   ///< mosaic: even rows R G R G, odd rows G B G B
    BAYER_GRBG = 2,   ///< mosaic: even rows G R, odd rows B G
    BAYER_GBRG = 3,   ///< mosaic: even rows G B, odd rows R G
    BAYER_BGGR = 4,   ///< mosaic: even rows B G, odd rows G R
    RGB = 5,          ///< interleaved samples R, G, B
    RGBA = 6,         ///< interleaved samples R, G, B, A
    BGR = 7,          ///< interleaved samples B, G, R
    BGRA = 8,         ///< interleaved samples B, G, R, A
    RGB_PLANAR = 9,   ///< planes R, G, B one after another
    RGBA_PLANAR = 10, ///< planes R, G, B, A
    BGR_PLANAR = 11,  ///< planes B, G, R
    BGRA_PLANAR = 12  ///< planes B, G, R, A
};

/// Returns the name of the enumerator, such as "BAYER_RGGB".
/// @throws std::runtime_error "Invalid image format."  not one of the thirteen
QUILL_API std::string getFormatName(IMAGE_FORMAT format);

/// Returns the format whose enumerator has the name, matched whole and case-sensitively; nothing for any other text.
QUILL_API std::optional<IMAGE_FORMAT> findFormat(const std::string& name);

} // namespace Imaging
