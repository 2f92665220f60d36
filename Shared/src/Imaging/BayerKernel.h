#pragma once

#include "Imaging/PixelView.h"

namespace Imaging {

/// What a kernel may use of the processor.
enum class Vectors {
    Portable, ///< what every processor has that the library is built for
    Wide      ///< AVX2
};

Vectors widestVectors();

/// Whether demosaic() gives what cv::cvtColor() gives, bit for bit, and clearly faster.
bool demosaicsFaster(const PixelView& source, const FormatDescription& target, Vectors vectors);

/// Demosaics as cv::cvtColor() does: samples of 16 bits to every layout, of 8 bits to all but grey. An alpha plane is
/// left as it is.
/// @pre a little-endian machine, at least 4 columns and 3 rows
void demosaic(const PixelView& source, const PixelView& target, Vectors vectors);

} // namespace Imaging
