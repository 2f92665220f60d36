// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Quill.h>

#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// A part of an image, in pixels.
struct PixelArea {
    unsigned x;
    unsigned y;
    unsigned width;
    unsigned height;
};

/// Reports the samples of a part of a frame as they were delivered, and as the colours of 8 bits that a picture of full
/// size has. Of a mosaic, "mosaic" has a text for each row with a letter for each pixel.
/// @throws Refusal  422 outside of the frame, or more than 64 x 64
Json reportPixels(const CameraInterface::Frame& frame, const PixelArea& area);

} // namespace QuillTool::Serve
