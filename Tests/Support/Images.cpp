// SPDX-License-Identifier: Apache-2.0

#include "Support/Images.h"

#include <random>

namespace TestSupport {

using Imaging::IMAGE_FORMAT;

std::vector<IMAGE_FORMAT> allFormats() {
    std::vector<IMAGE_FORMAT> formats;
    for (int number = 0; number <= static_cast<int>(IMAGE_FORMAT::BGRA_PLANAR); ++number) {
        formats.push_back(static_cast<IMAGE_FORMAT>(number));
    }
    return formats;
}

std::unique_ptr<Imaging::Image> patternImage(unsigned width, unsigned height, unsigned bitDepth, IMAGE_FORMAT format,
                                             bool littleEndian) {
    auto image = Imaging::createImage(width, height, {}, bitDepth, littleEndian, format);
    std::mt19937 random(width * 7919 + height * 31 + bitDepth);
    const unsigned largest = bitDepth >= 16 ? 0xFFFF : (1U << bitDepth) - 1;
    unsigned char* byte = image->getDataAddress();
    const unsigned bytesPerSample = image->getBytesPerChannel();
    for (unsigned char* const end = byte + image->getImageSize(); byte < end; byte += bytesPerSample) {
        const unsigned sample = static_cast<unsigned>(random()) & largest;
        for (unsigned k = 0; k < bytesPerSample; ++k) {
            byte[littleEndian ? k : bytesPerSample - 1 - k] = static_cast<unsigned char>(sample >> (8 * k));
        }
    }
    return image;
}

std::vector<Imaging::Vectors> kindsOfVectors() {
    std::vector<Imaging::Vectors> kinds{Imaging::Vectors::Portable};
    if (Imaging::widestVectors() == Imaging::Vectors::Wide) {
        kinds.push_back(Imaging::Vectors::Wide);
    }
    return kinds;
}

} // namespace TestSupport
