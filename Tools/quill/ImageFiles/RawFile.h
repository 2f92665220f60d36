// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

/// Makes an image of a raw frame's bytes.
/// @throws std::runtime_error  the description is invalid, or does not match the number of bytes
std::unique_ptr<Imaging::Image> readRaw(std::vector<unsigned char> bytes, const RawDescription& description);

/// Writes an image's bytes unchanged.
void writeRaw(const Imaging::Image& image, AtomicFile& file);

} // namespace QuillTool
