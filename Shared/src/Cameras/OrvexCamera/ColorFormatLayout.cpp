// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/ColorFormatLayout.h"

#include <array>
#include <string_view>

#include "Exceptions/Raise.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

struct ColorFormatLayout {
    std::string_view colorFormat;
    Imaging::IMAGE_FORMAT layout;
};

constexpr std::array<ColorFormatLayout, 5> kLayouts{{
    {"MONO", Imaging::IMAGE_FORMAT::MONO},
    {"RGGB", Imaging::IMAGE_FORMAT::BAYER_RGGB},
    {"GRBG", Imaging::IMAGE_FORMAT::BAYER_GRBG},
    {"GBRG", Imaging::IMAGE_FORMAT::BAYER_GBRG},
    {"BGGR", Imaging::IMAGE_FORMAT::BAYER_BGGR},
}};

} // namespace

Imaging::IMAGE_FORMAT getImageFormatFromColorFormat(const std::string& colorFormat, const SourceLocation& here) {
    for (const ColorFormatLayout& row : kLayouts) {
        if (row.colorFormat == colorFormat) {
            return row.layout;
        }
    }
    raise<KestrelException_InvalidArgument>(here, Errors::kArgumentUnhandled, colorFormat);
}

} // namespace OrvexAdapter
