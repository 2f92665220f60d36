// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Quill.h>

#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// Measures an image by about half a million of its samples, which lie in a regular grid:
/// - "histogram": for each channel, the counts of samples in 256 bins of equal width, which span the depth;
/// - "channels": their names;
/// - "saturated": the fraction of samples that have the largest value of the depth, 0 to 1;
/// - "focus": the variance of the Laplacian of the grey or green samples, divided by the square of their mean, which
///   grows with the sharpness; independent of the brightness.
/// @throws std::runtime_error  the image cannot be shown
Json analyse(const Imaging::Image& image);

} // namespace QuillTool::Serve
