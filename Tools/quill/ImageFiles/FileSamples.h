// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <Quill.h>

namespace QuillTool {

/// Supported depths of images, in bits per sample.
constexpr std::array<unsigned, 4> kBitDepths{8, 10, 12, 16};

/// Returns the samples per pixel in memory; 1 for a mosaic.
unsigned samplesPerPixel(const Imaging::Image& image);

/// Returns the layout of image files with 1, 3 or 4 samples per pixel.
Imaging::IMAGE_FORMAT fileLayout(unsigned samplesPerPixel);

/// Converts the rows of an image to the form of image files: bytes, or words with the high byte first. Limits samples
/// to the largest value of the image's depth: opaque alpha of 10 and 12 bits exceeds it.
class FileSamples {
public:
    /// @param image  outlives this object; has contiguous pixels
    /// @param largest  new largest value of samples of more than 8 bits; that of the image leaves them unchanged
    /// @throws std::runtime_error  samples of more than 16 bits
    FileSamples(const Imaging::Image& image, unsigned largest);

    /// Returns the largest value of the image's depth.
    static unsigned largestValue(const Imaging::Image& image);

    std::size_t rowBytes() const { return m_RowBytes; }
    /// Valid until the next call. Does not throw.
    const unsigned char* row(unsigned number);

private:
    unsigned scaled(unsigned value) const;

    const Imaging::Image& m_Image;
    std::size_t m_RowBytes;
    unsigned m_ImageLargest;
    unsigned m_FileLargest;
    std::vector<unsigned char> m_Row;
};

} // namespace QuillTool
