// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include <Quill.h>

namespace QuillTool {

/// Reads a TIFF file: grey, RGB or RGBA samples of 8 or 16 bits, row by row in strips, not compressed or by LZW,
/// PackBits or deflate; of several pages, the first. A DNG file's mosaic keeps its layout. The depth is 10 or 12 bits
/// if MaxSampleValue says so and no sample exceeds it.
/// @throws std::runtime_error  malformed, truncated, too large or another kind of TIFF
std::unique_ptr<Imaging::Image> readTiff(const std::vector<unsigned char>& bytes);

} // namespace QuillTool
