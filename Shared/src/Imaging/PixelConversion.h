// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/PixelView.h"

namespace Imaging {

/// Whether the conversion computes with sample values, which must then be in machine byte order; other conversions only
/// move samples.
bool computesWithSamples(const FormatDescription& source, const FormatDescription& target);

/// Converts @p source into @p target, which has the same size and depth: any pair of formats except to a mosaic or to
/// the same format. Writes every byte of the target.
void convertPixels(const PixelView& source, const PixelView& target);

} // namespace Imaging
