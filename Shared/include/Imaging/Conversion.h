// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "../Export.h"
#include "Image.h"

namespace Imaging {

/// Returns every pair of formats that convertImage() converts: key (source format x 256 + target format) and name, such
/// as "BAYER_RGGB_TO_BGR".
QUILL_API std::map<unsigned short, std::string> getAvailableConversions();

/// Whether getAvailableConversions() contains the key of the pair, which holds the low byte of each format number.
/// False if both formats are the same.
QUILL_API bool conversionExists(IMAGE_FORMAT from, IMAGE_FORMAT to);

/// Returns a new image in another format, or a copy if the format is the same. Width, height, depth and byte order
/// stay.
///
/// Samples are reordered but never scaled. A mosaic is demosaiced bilinearly; grey is the usual weighted sum of the
/// colours; alpha that is added has the largest value of the sample's width. Thread-safe for different images. Large
/// images are converted on several threads: as many as OpenCV may use, at most 16.
/// @throws std::runtime_error "Conversion between selected formats is not possible."
/// @throws std::runtime_error "Cannot handle greater than 2 bytes per channel."
/// @throws std::invalid_argument "Image cannot be null."
/// @throws cv::Exception  OpenCV cannot address the dimensions
QUILL_API std::unique_ptr<Image> convertImage(const std::unique_ptr<Image>& image, IMAGE_FORMAT format);
/// The same for an image that is not the caller's own, such as that of a Frame.
QUILL_API std::unique_ptr<Image> convertImage(const Image& image, IMAGE_FORMAT format);

} // namespace Imaging
