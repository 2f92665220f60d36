// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>

#include <Quill.h>

namespace QuillTool {

/// The layout of pixels.
struct PixelLayout {
    Imaging::IMAGE_FORMAT format;
    unsigned bitDepth; ///< of a sample
};

/// The layout of pixels of 24, 32 and 48 bits, whose colour a camera computed itself; nothing for any other number.
std::optional<PixelLayout> findComputedColor(unsigned bitsPerPixel);

/// Such an image, which the library gives in the format of the camera's sensor, as the picture that its bytes are; any
/// other image as it is.
std::unique_ptr<Imaging::Image> withComputedColor(std::unique_ptr<Imaging::Image> image);

/// The layout of the images that an SDK camera delivers as it is set up; nothing where it cannot be read.
std::optional<PixelLayout> findDeliveredLayout(CameraInterface::Camera& camera);

} // namespace QuillTool
