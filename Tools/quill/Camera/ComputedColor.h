// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>

#include <Quill.h>

namespace QuillTool {

/// The layout of pixels.
struct PixelLayout {
    Imaging::IMAGE_FORMAT format;
    unsigned bitDepth; ///< bits per sample
};

/// Returns the layout of pixels of 24, 32 or 48 bits, whose colour the camera computes; nothing for any other depth.
std::optional<PixelLayout> findComputedColor(unsigned bitsPerPixel);

/// Declares the true layout of an image whose colour the camera computed and which the library labels with the sensor's
/// format. Returns any other image unchanged.
std::unique_ptr<Imaging::Image> withComputedColor(std::unique_ptr<Imaging::Image> image);

/// Returns the layout of the images that an SDK camera delivers with its current settings; nothing if it cannot be
/// read.
std::optional<PixelLayout> findDeliveredLayout(CameraInterface::Camera& camera);

} // namespace QuillTool
