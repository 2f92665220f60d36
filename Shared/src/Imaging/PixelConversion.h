// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/PixelView.h"

namespace Imaging {

/// Whether the conversion computes with sample values, so that they must be in machine byte order; the others move
/// samples.
bool computesWithSamples(const FormatDescription& source, const FormatDescription& target);

/// Converts @p source into @p target, of the same size and depth: any pair of formats but to a mosaic or to itself.
/// Every byte of the target is written.
void convertPixels(const PixelView& source, const PixelView& target);

} // namespace Imaging
