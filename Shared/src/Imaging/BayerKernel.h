// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/PixelView.h"
#include "Imaging/Vectors.h"

namespace Imaging {

/// Whether demosaic() gives the same bits as cv::cvtColor(), and clearly faster.
bool demosaicsFaster(const PixelView& source, const FormatDescription& target, Vectors vectors);

/// Demosaics as cv::cvtColor() does, bytes to grey with wide vectors whatever @p vectors are. Leaves an alpha plane
/// unchanged.
/// @pre a little-endian machine, at least 4 columns and 3 rows; for bytes to grey, one with Vectors::Wide
void demosaic(const PixelView& source, const PixelView& target, Vectors vectors);

} // namespace Imaging
