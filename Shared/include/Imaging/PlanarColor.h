// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "../Export.h"
#include "Image.h"

namespace Imaging {

/// A colour image with one plane per channel, one after another.
class QUILL_API PlanarColor : public Image {
public:
    PlanarColor(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
                IMAGE_FORMAT format, unsigned channels, unsigned planes);

    unsigned getBytesPerPixel() const override;
    unsigned getStride() const override;
    unsigned getPlaneStride() const override;
    Pixel getPixel(unsigned row, unsigned column) const override;
    void setPixel(unsigned row, unsigned column, Pixel pixel) override;

private:
    std::size_t getPlaneSize() const;
    std::size_t getPixelIndex(unsigned row, unsigned column) const;
};

} // namespace Imaging
