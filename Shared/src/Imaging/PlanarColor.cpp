// SPDX-License-Identifier: Apache-2.0

#include "Imaging/PlanarColor.h"

#include <utility>

#include "Imaging/FormatTable.h"

namespace Imaging {

PlanarColor::PlanarColor(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth,
                         bool littleEndian, IMAGE_FORMAT format, unsigned channels, unsigned planes)
    : Image(width, height, std::move(data), bitDepth, littleEndian, format, channels, planes) {
    validateDataSize();
}

unsigned PlanarColor::getBytesPerPixel() const {
    return getBytesPerChannel() * getNumberOfChannels();
}

unsigned PlanarColor::getStride() const {
    return getBytesPerChannel() * getWidth();
}

unsigned PlanarColor::getPlaneStride() const {
    return getStride() * getHeight();
}

Pixel PlanarColor::getPixel(unsigned row, unsigned column) const {
    validatePixelIndices(row, column);
    return readColorPixel(describe(getFormat(), Layout::Planar), getPixelIndex(row, column), getPlaneSize());
}

void PlanarColor::setPixel(unsigned row, unsigned column, Pixel pixel) {
    validatePixelIndices(row, column);
    writeColorPixel(describe(getFormat(), Layout::Planar), getPixelIndex(row, column), getPlaneSize(), pixel);
}

std::size_t PlanarColor::getPlaneSize() const {
    return std::size_t{getWidth()} * getHeight() * getBytesPerChannel();
}

std::size_t PlanarColor::getPixelIndex(unsigned row, unsigned column) const {
    return getPixelOffset(row, column, getBytesPerChannel());
}

} // namespace Imaging
