// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

/// Reads PGM and PPM (binary or text, P2, P3, P5, P6) and PAM (P7); of several images, the first. Words are
/// little-endian in the image.
/// @throws std::runtime_error  malformed, truncated or an unsupported kind of PNM
std::unique_ptr<Imaging::Image> readPnm(const std::vector<unsigned char>& bytes);

/// Writes one sample per pixel as PGM, three as PPM.
void writePnm(const Imaging::Image& image, AtomicFile& file);

/// Writes one, three or four samples per pixel.
void writePam(const Imaging::Image& image, AtomicFile& file);

} // namespace QuillTool
