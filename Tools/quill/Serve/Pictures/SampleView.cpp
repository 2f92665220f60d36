// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/SampleView.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "Camera/ComputedColor.h"
#include "ImageFiles/CfaPattern.h"

namespace QuillTool::Serve {

using Imaging::IMAGE_FORMAT;

namespace {

/// Where a colour layout has its samples.
struct ColorLayout {
    IMAGE_FORMAT format;
    unsigned samples; ///< per pixel
    bool isPlanar;
    std::array<unsigned char, 3> place; ///< of red, green and blue among them
};

constexpr std::array<ColorLayout, 8> kColorLayouts{{
    {IMAGE_FORMAT::RGB, 3, false, {0, 1, 2}},
    {IMAGE_FORMAT::RGBA, 4, false, {0, 1, 2}},
    {IMAGE_FORMAT::BGR, 3, false, {2, 1, 0}},
    {IMAGE_FORMAT::BGRA, 4, false, {2, 1, 0}},
    {IMAGE_FORMAT::RGB_PLANAR, 3, true, {0, 1, 2}},
    {IMAGE_FORMAT::RGBA_PLANAR, 4, true, {0, 1, 2}},
    {IMAGE_FORMAT::BGR_PLANAR, 3, true, {2, 1, 0}},
    {IMAGE_FORMAT::BGRA_PLANAR, 4, true, {2, 1, 0}},
}};

bool isThisComputerLittleEndian() {
    const std::uint16_t word = 1;
    unsigned char first = 0;
    std::memcpy(&first, &word, 1);
    return first == 1;
}

} // namespace

SampleView::SampleView(const Imaging::Image& image)
    : data(image.getDataAddress()), width(image.getWidth()), height(image.getHeight()), format(image.getFormat()),
      bitDepth(image.getBitDepth()), isSwapped(image.isLittleEndian() != isThisComputerLittleEndian()) {
    if (const auto computed = findComputedColor(bitDepth)) {
        format = computed->format;
        bitDepth = computed->bitDepth;
    }
    if (bitDepth > 16) {
        throw std::runtime_error(fmt::format("Samples of {} bits cannot be shown.", bitDepth));
    }
    isWide = bitDepth > 8;
    const auto* const pattern = std::find_if(kCfaPatterns.begin(), kCfaPatterns.end(),
                                             [this](const CfaPattern& row) { return row.format == format; });
    const auto* const layout = std::find_if(kColorLayouts.begin(), kColorLayouts.end(),
                                            [this](const ColorLayout& row) { return row.format == format; });
    if (pattern != kCfaPatterns.end()) {
        isMosaic = true;
        channels = 3;
        mosaic = pattern->colors;
    } else if (layout != kColorLayouts.end()) {
        channels = 3;
        columnStep = layout->isPlanar ? 1 : layout->samples;
        const std::size_t step = layout->isPlanar ? std::size_t{width} * height : 1;
        std::transform(layout->place.begin(), layout->place.end(), channelStart.begin(),
                       [step](unsigned char place) { return place * step; });
    }
}

std::vector<std::string> SampleView::channelNames() const {
    return channels == 1 ? std::vector<std::string>{"Mono"} : std::vector<std::string>{"Red", "Green", "Blue"};
}

} // namespace QuillTool::Serve
