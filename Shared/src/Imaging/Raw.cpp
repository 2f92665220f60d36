// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Raw.h"

#include <utility>

#include "Imaging/FormatTable.h"

namespace Imaging {

Raw::Raw(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
         IMAGE_FORMAT format, unsigned channels, unsigned planes)
    : Image(width, height, std::move(data), bitDepth, littleEndian, format, channels, planes) {
    validateDataSize();
}

unsigned Raw::getBytesPerPixel() const {
    return getBytesPerChannel();
}

unsigned Raw::getStride() const {
    return getBytesPerChannel() * getWidth();
}

unsigned Raw::getPlaneStride() const {
    return getStride() * getHeight();
}

Pixel Raw::getPixel(unsigned row, unsigned column) const {
    validatePixelIndices(row, column);
    Pixel pixel;
    pixel.channel[getBayerColor(row, column)] = readSample(getPixelIndex(row, column));
    return pixel;
}

void Raw::setPixel(unsigned row, unsigned column, Pixel pixel) {
    validatePixelIndices(row, column);
    writeSample(getPixelIndex(row, column), pixel.channel[getBayerColor(row, column)]);
}

Raw::BAYER_COLOR Raw::getBayerColor(unsigned row, unsigned column) const {
    const FormatDescription& description = describe(getFormat(), Layout::Mosaic);
    return static_cast<BAYER_COLOR>(description.channelOfSample[row % 2 * 2 + column % 2]);
}

std::size_t Raw::getPixelIndex(unsigned row, unsigned column) const {
    return getPixelOffset(row, column, getBytesPerPixel());
}

} // namespace Imaging
