// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "../Export.h"
#include "Image.h"

namespace Imaging {

/// A Bayer mosaic: one sample per pixel, whose colour depends on the parity of its row and column.
class QUILL_API Raw : public Image {
public:
    /// The colour of a mosaic site: the number of the pixel channel that holds its sample.
    enum BAYER_COLOR { RED = 0, GREEN_1 = 1, GREEN_2 = 2, BLUE = 3 };

    Raw(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
        IMAGE_FORMAT format, unsigned channels, unsigned planes);

    unsigned getBytesPerPixel() const override;
    unsigned getStride() const override;
    unsigned getPlaneStride() const override;
    Pixel getPixel(unsigned row, unsigned column) const override;
    void setPixel(unsigned row, unsigned column, Pixel pixel) override;

private:
    virtual BAYER_COLOR getBayerColor(unsigned row, unsigned column) const;
    std::size_t getPixelIndex(unsigned row, unsigned column) const;
};

} // namespace Imaging
