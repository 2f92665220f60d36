// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

/// Reads any PNG as MONO, RGB or RGBA. Words are little-endian in the image.
/// @throws std::runtime_error  malformed, truncated or too large
std::unique_ptr<Imaging::Image> readPng(const std::vector<unsigned char>& bytes);

/// Writes one, three or four samples per pixel. Depths of 10 and 12 bits are scaled to 16 and named as significant
/// bits.
/// @throws std::runtime_error  more than a million pixels on a side
void writePng(const Imaging::Image& image, AtomicFile& file);

} // namespace QuillTool
