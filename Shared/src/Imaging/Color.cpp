// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Color.h"

#include <utility>

#include "Imaging/FormatTable.h"

namespace Imaging {

Color::Color(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
             IMAGE_FORMAT format, unsigned channels, unsigned planes)
    : Image(width, height, std::move(data), bitDepth, littleEndian, format, channels, planes) {
    validateDataSize();
}

unsigned Color::getBytesPerPixel() const {
    return getBytesPerChannel() * getNumberOfChannels();
}

unsigned Color::getStride() const {
    return getBytesPerPixel() * getWidth();
}

unsigned Color::getPlaneStride() const {
    return getStride() * getHeight();
}

Pixel Color::getPixel(unsigned row, unsigned column) const {
    validatePixelIndices(row, column);
    return readColorPixel(describe(getFormat(), Layout::Interleaved), getPixelIndex(row, column), getBytesPerChannel());
}

void Color::setPixel(unsigned row, unsigned column, Pixel pixel) {
    validatePixelIndices(row, column);
    writeColorPixel(describe(getFormat(), Layout::Interleaved), getPixelIndex(row, column), getBytesPerChannel(),
                    pixel);
}

std::size_t Color::getPixelIndex(unsigned row, unsigned column) const {
    return getPixelOffset(row, column, getBytesPerPixel());
}

} // namespace Imaging
