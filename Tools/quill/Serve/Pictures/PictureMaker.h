// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include <Quill.h>

#include "Serve/Pictures/SampleView.h"

namespace QuillTool::Serve {

/// A picture of 8 bits per sample, row by row without gaps.
struct Bitmap {
    enum class Layout { Grey, Rgb, Bgr, Rgba, Bgra };

    const unsigned char* pixels = nullptr;
    unsigned width = 0;
    unsigned height = 0;
    Layout layout = Layout::Grey;
};

/// Makes pictures of images of any layout and depth: the high bits of the samples; of a mosaic, the interpolated
/// colours. Keeps its memory from one picture to the next.
class PictureMaker {
public:
    /// @param scale  1, 2, 4 or 8: pixels are averages of so many columns and rows, and what is left over at the right
    ///               and below is left out. A smaller one is taken where an image has not so many.
    /// @return valid until the next call, and while the image lives
    /// @throws std::exception  the image cannot be shown
    Bitmap make(const Imaging::Image& image, unsigned scale);

private:
    Bitmap atFullSize(const Imaging::Image& image, const SampleView& view);
    Bitmap interpolated(const Imaging::Image& image, const SampleView& view);

    std::vector<unsigned char> m_Pixels;
    std::vector<unsigned> m_Sums;
    std::unique_ptr<Imaging::Image> m_Narrow; // a mosaic's high bits
    std::unique_ptr<Imaging::Image> m_Colors; // of a mosaic
};

} // namespace QuillTool::Serve
