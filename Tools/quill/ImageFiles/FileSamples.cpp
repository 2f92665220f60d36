// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/FileSamples.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

namespace QuillTool {

unsigned samplesPerPixel(const Imaging::Image& image) {
    return image.getBytesPerPixel() / image.getBytesPerChannel();
}

Imaging::IMAGE_FORMAT fileLayout(unsigned samplesPerPixel) {
    switch (samplesPerPixel) {
    case 1:
        return Imaging::IMAGE_FORMAT::MONO;
    case 3:
        return Imaging::IMAGE_FORMAT::RGB;
    case 4:
        return Imaging::IMAGE_FORMAT::RGBA;
    default:
        throw std::runtime_error(fmt::format("images of {} samples per pixel are not supported", samplesPerPixel));
    }
}

FileSamples::FileSamples(const Imaging::Image& image, unsigned largest)
    : m_Image(image), m_RowBytes(std::size_t{image.getWidth()} * image.getBytesPerPixel()),
      m_ImageLargest(largestValue(image)), m_FileLargest(largest),
      m_Row(image.getBytesPerChannel() == 1 ? 0 : m_RowBytes) {}

unsigned FileSamples::largestValue(const Imaging::Image& image) {
    if (image.getBytesPerChannel() > 2) {
        throw std::runtime_error(fmt::format("samples of {} bits do not fit", image.getBitDepth()));
    }
    return image.getBytesPerChannel() == 1 ? 0xFF : (1U << image.getBitDepth()) - 1;
}

unsigned FileSamples::scaled(unsigned value) const {
    const unsigned kept = std::min(value, m_ImageLargest);
    return m_FileLargest == m_ImageLargest ? kept : (kept * m_FileLargest + m_ImageLargest / 2) / m_ImageLargest;
}

const unsigned char* FileSamples::row(unsigned number) {
    const unsigned char* source = m_Image.getDataAddress() + number * m_RowBytes;
    if (m_Row.empty()) {
        return source;
    }
    const std::size_t high = m_Image.isLittleEndian() ? 1 : 0;
    for (std::size_t k = 0; k < m_RowBytes; k += 2) {
        const unsigned value = scaled(source[k + high] * 256U + source[k + 1 - high]);
        m_Row[k] = static_cast<unsigned char>(value >> 8);
        m_Row[k + 1] = static_cast<unsigned char>(value);
    }
    return m_Row.data();
}

} // namespace QuillTool
