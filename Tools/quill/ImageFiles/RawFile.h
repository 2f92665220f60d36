// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

/// The frame that the bytes are, by its description.
/// @throws std::runtime_error  not exactly the bytes of such a frame, or no such frame exists
std::unique_ptr<Imaging::Image> readRaw(std::vector<unsigned char> bytes, const RawDescription& description);

/// Writes an image's bytes as they lie.
void writeRaw(const Imaging::Image& image, AtomicFile& file);

} // namespace QuillTool
