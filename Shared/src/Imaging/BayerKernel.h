// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/PixelView.h"
#include "Imaging/Vectors.h"

namespace Imaging {

/// Whether demosaic() gives the same bits as cv::cvtColor(), and clearly faster.
bool demosaicsFaster(const PixelView& source, const FormatDescription& target, Vectors vectors);

/// Demosaics as cv::cvtColor() does: samples of 16 bits to every layout, of 8 bits to all but grey. Leaves an alpha
/// plane unchanged.
/// @pre a little-endian machine, at least 4 columns and 3 rows
void demosaic(const PixelView& source, const PixelView& target, Vectors vectors);

} // namespace Imaging
