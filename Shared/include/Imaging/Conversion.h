// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "../Export.h"
#include "Image.h"

namespace Imaging {

/// Every pair of formats that convertImage() converts: key (source format x 256 + target format) and name, such as
/// "BAYER_RGGB_TO_BGR".
QUILL_API std::map<unsigned short, std::string> getAvailableConversions();

/// Whether the key of the pair, which holds the low byte of each number, is in getAvailableConversions(). False for a
/// format and itself.
QUILL_API bool conversionExists(IMAGE_FORMAT from, IMAGE_FORMAT to);

/// A new image in another format; to its own format, a copy. Width, height, depth and byte order stay.
///
/// Samples are reordered as they lie and never scaled. A mosaic is demosaiced bilinearly, grey is the usual weighted
/// sum of the colours; alpha that is added is the largest number of the sample's width. Thread-safe for different
/// images. Large ones are converted on several threads: on as many as OpenCV may use, and no more than 16.
/// @throws std::runtime_error "Conversion between selected formats is not possible."
/// @throws std::runtime_error "Cannot handle greater than 2 bytes per channel."
/// @throws std::invalid_argument "Image cannot be null."
/// @throws cv::Exception  OpenCV refuses dimensions that it cannot address
QUILL_API std::unique_ptr<Image> convertImage(const std::unique_ptr<Image>& image, IMAGE_FORMAT format);

} // namespace Imaging
