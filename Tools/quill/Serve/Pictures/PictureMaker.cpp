// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/PictureMaker.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace QuillTool::Serve {

using Imaging::IMAGE_FORMAT;

namespace {

constexpr unsigned kByteBits = 8;
constexpr unsigned kLargestByte = 255;

/// The layouts whose pixels are taken where they lie.
struct ReadyLayout {
    IMAGE_FORMAT format;
    Bitmap::Layout layout;
};

constexpr std::array<ReadyLayout, 5> kReadyLayouts{{
    {IMAGE_FORMAT::MONO, Bitmap::Layout::Grey},
    {IMAGE_FORMAT::RGB, Bitmap::Layout::Rgb},
    {IMAGE_FORMAT::BGR, Bitmap::Layout::Bgr},
    {IMAGE_FORMAT::RGBA, Bitmap::Layout::Rgba},
    {IMAGE_FORMAT::BGRA, Bitmap::Layout::Bgra},
}};

Bitmap::Layout layoutOf(const SampleView& view) {
    return view.channels == 1 ? Bitmap::Layout::Grey : Bitmap::Layout::Rgb;
}

unsigned char narrowed(unsigned value, unsigned shift) {
    return static_cast<unsigned char>(std::min(value >> shift, kLargestByte));
}

/// Copies the high bits of one channel to every @p step th byte.
template <typename Reader>
void copyHighBits(const SampleView& view, Reader read, std::size_t start, unsigned char* target, std::size_t step) {
    const unsigned shift = view.bitDepth - kByteBits;
    const std::size_t pixels = std::size_t{view.width} * view.height;
    for (std::size_t k = 0; k < pixels; ++k) {
        target[k * step] = narrowed(read(start + k * view.columnStep), shift);
    }
}

/// Adds the samples of one row to the sums of its picture's row: one sum per pixel and channel.
template <unsigned scale, typename Reader>
void addRow(const SampleView& view, Reader read, unsigned row, std::vector<unsigned>& sums) {
    const std::size_t pixels = sums.size() / view.channels;
    if (view.isMosaic) {
        unsigned* const even = sums.data() + view.mosaicChannel(row, 0);
        unsigned* const odd = sums.data() + view.mosaicChannel(row, 1);
        std::size_t source = view.index(row, 0);
        for (std::size_t x = 0; x < pixels; ++x) {
            for (unsigned k = 0; k < scale; k += 2) {
                even[3 * x] += read(source++);
                odd[3 * x] += read(source++);
            }
        }
        return;
    }
    for (unsigned channel = 0; channel < view.channels; ++channel) {
        std::size_t source = view.channelStart[channel] + view.index(row, 0);
        for (std::size_t x = 0; x < pixels; ++x) {
            unsigned sum = 0;
            for (unsigned k = 0; k < scale; ++k, source += view.columnStep) {
                sum += read(source);
            }
            sums[x * view.channels + channel] += sum;
        }
    }
}

/// The binary logarithm of the samples of a channel in a block. Half of a mosaic's are green, a quarter red and blue.
unsigned samplesExponent(const SampleView& view, unsigned channel, unsigned scaleExponent) {
    constexpr unsigned kGreen = 1;
    return 2 * scaleExponent - (!view.isMosaic ? 0 : channel == kGreen ? 1 : 2);
}

template <unsigned scaleExponent, typename Reader>
void averageBlocks(const SampleView& view, Reader read, unsigned rows, std::vector<unsigned>& sums,
                   unsigned char* target) {
    constexpr unsigned kScale = 1U << scaleExponent;
    std::array<unsigned, 3> shifts{};
    for (unsigned channel = 0; channel < view.channels; ++channel) {
        shifts[channel] = samplesExponent(view, channel, scaleExponent) + view.bitDepth - kByteBits;
    }
    for (unsigned y = 0; y < rows; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (unsigned k = 0; k < kScale; ++k) {
            addRow<kScale>(view, read, y * kScale + k, sums);
        }
        for (std::size_t x = 0; x < sums.size(); x += view.channels) {
            for (unsigned channel = 0; channel < view.channels; ++channel) {
                *target++ = narrowed(sums[x + channel], shifts[channel]);
            }
        }
    }
}

unsigned scaleExponentFor(const SampleView& view, unsigned scale) {
    constexpr unsigned kMost = 3;
    unsigned exponent = 0;
    while (exponent < kMost && 2U << exponent <= std::min({scale, view.width, view.height})) {
        ++exponent;
    }
    return exponent;
}

} // namespace

Bitmap PictureMaker::make(const Imaging::Image& image, unsigned scale) {
    const SampleView view(image);
    const unsigned exponent = scaleExponentFor(view, scale);
    if (exponent == 0) {
        return atFullSize(image, view);
    }
    const Bitmap made{nullptr, view.width >> exponent, view.height >> exponent, layoutOf(view)};
    m_Sums.resize(std::size_t{made.width} * view.channels);
    m_Pixels.resize(m_Sums.size() * made.height);
    withReader(view, [&](auto read) {
        switch (exponent) {
        case 1:
            return averageBlocks<1>(view, read, made.height, m_Sums, m_Pixels.data());
        case 2:
            return averageBlocks<2>(view, read, made.height, m_Sums, m_Pixels.data());
        default:
            return averageBlocks<3>(view, read, made.height, m_Sums, m_Pixels.data());
        }
    });
    return {m_Pixels.data(), made.width, made.height, made.layout};
}

Bitmap PictureMaker::atFullSize(const Imaging::Image& image, const SampleView& view) {
    if (view.isMosaic) {
        return interpolated(image, view);
    }
    const auto* const ready = std::find_if(kReadyLayouts.begin(), kReadyLayouts.end(),
                                           [&](const ReadyLayout& row) { return row.format == view.format; });
    if (view.bitDepth == kByteBits && ready != kReadyLayouts.end()) {
        return {view.data, view.width, view.height, ready->layout};
    }
    m_Pixels.resize(std::size_t{view.width} * view.height * view.channels);
    withReader(view, [&](auto read) {
        for (unsigned channel = 0; channel < view.channels; ++channel) {
            copyHighBits(view, read, view.channelStart[channel], m_Pixels.data() + channel, view.channels);
        }
    });
    return {m_Pixels.data(), view.width, view.height, layoutOf(view)};
}

Bitmap PictureMaker::interpolated(const Imaging::Image& image, const SampleView& view) {
    const Imaging::Image* mosaic = &image;
    if (view.isWide) {
        if (!m_Narrow || m_Narrow->getWidth() != view.width || m_Narrow->getHeight() != view.height ||
            m_Narrow->getFormat() != view.format) {
            m_Narrow = Imaging::createImage(view.width, view.height, {}, kByteBits, true, view.format);
        }
        withReader(view, [&](auto read) { copyHighBits(view, read, 0, m_Narrow->getDataAddress(), 1); });
        mosaic = m_Narrow.get();
    }
    m_Colors = convertImage(*mosaic, IMAGE_FORMAT::RGB);
    return {m_Colors->getDataAddress(), view.width, view.height, Bitmap::Layout::Rgb};
}

} // namespace QuillTool::Serve
