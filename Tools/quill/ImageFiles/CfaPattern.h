// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <Quill.h>

namespace QuillTool {

/// The colours of a mosaic's upper left 2 x 2 pixels, row by row, as TIFF's tag CFAPattern has them: 0 red, 1 green,
/// 2 blue.
struct CfaPattern {
    Imaging::IMAGE_FORMAT format;
    std::array<unsigned char, 4> colors;
};
constexpr std::array<CfaPattern, 4> kCfaPatterns{{
    {Imaging::IMAGE_FORMAT::BAYER_RGGB, {0, 1, 1, 2}},
    {Imaging::IMAGE_FORMAT::BAYER_GRBG, {1, 0, 2, 1}},
    {Imaging::IMAGE_FORMAT::BAYER_GBRG, {1, 2, 0, 1}},
    {Imaging::IMAGE_FORMAT::BAYER_BGGR, {2, 1, 1, 0}},
}};

} // namespace QuillTool
