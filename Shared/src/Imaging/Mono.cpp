// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Mono.h"

#include <utility>

namespace Imaging {

Mono::Mono(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian)
    : Image(width, height, std::move(data), bitDepth, littleEndian, IMAGE_FORMAT::MONO, 1, 1) {
    validateDataSize();
}

unsigned Mono::getBytesPerPixel() const {
    return getBytesPerChannel();
}

unsigned Mono::getStride() const {
    return getBytesPerChannel() * getWidth();
}

unsigned Mono::getPlaneStride() const {
    return getStride() * getHeight();
}

Pixel Mono::getPixel(unsigned row, unsigned column) const {
    validatePixelIndices(row, column);
    Pixel pixel;
    pixel.channel[0] = readSample(getPixelIndex(row, column));
    return pixel;
}

void Mono::setPixel(unsigned row, unsigned column, Pixel pixel) {
    validatePixelIndices(row, column);
    writeSample(getPixelIndex(row, column), pixel.channel[0]);
}

std::size_t Mono::getPixelIndex(unsigned row, unsigned column) const {
    return getPixelOffset(row, column, getBytesPerPixel());
}

} // namespace Imaging
