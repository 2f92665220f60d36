// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "../Export.h"
#include "Image.h"

namespace Imaging {

/// A grey image: one sample per pixel, in channel 0.
class QUILL_API Mono : public Image {
public:
    Mono(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian);

    unsigned getBytesPerPixel() const override;
    unsigned getStride() const override;
    unsigned getPlaneStride() const override;
    Pixel getPixel(unsigned row, unsigned column) const override;
    void setPixel(unsigned row, unsigned column, Pixel pixel) override;

private:
    std::size_t getPixelIndex(unsigned row, unsigned column) const;
};

} // namespace Imaging
