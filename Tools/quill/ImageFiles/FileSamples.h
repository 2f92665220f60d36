// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <Quill.h>

namespace QuillTool {

/// The depths that images have, in bits per sample.
constexpr std::array<unsigned, 4> kBitDepths{8, 10, 12, 16};

/// Samples that one pixel takes in memory: 1 of a mosaic too.
unsigned samplesPerPixel(const Imaging::Image& image);

/// The layout that image files of 1, 3 or 4 samples per pixel have.
Imaging::IMAGE_FORMAT fileLayout(unsigned samplesPerPixel);

/// The rows of an image as image files store them: bytes, or words with the larger byte first. Samples beyond the
/// image's depth become its largest value: opaque alpha of 10 and 12 bits lies beyond.
class FileSamples {
public:
    /// @param image  outlives this object; its pixels follow each other
    /// @param largest  what samples of more than 8 bits are scaled to; the image's own largest value scales nothing
    /// @throws std::runtime_error  samples of more than 16 bits
    FileSamples(const Imaging::Image& image, unsigned largest);

    /// The largest value of the image's depth.
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
