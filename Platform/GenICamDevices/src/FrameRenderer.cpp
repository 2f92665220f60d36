// SPDX-License-Identifier: Apache-2.0

#include "FrameRenderer.h"

#include <algorithm>

namespace GenICamDevices {

namespace {

Bytes packSamples(const std::vector<std::uint16_t>& samples, const PixelFormat& format) {
    Bytes bytes;
    bytes.reserve(samples.size() * 2);
    switch (format.packing) {
    case Packing::Bytes:
        bytes.assign(samples.begin(), samples.end());
        break;
    case Packing::LittleEndian:
        for (const std::uint16_t sample : samples) {
            bytes.push_back(static_cast<std::uint8_t>(sample));
            bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
        }
        break;
    case Packing::LowBitsFirst: {
        std::uint32_t pending = 0;
        std::uint32_t pendingBits = 0;
        for (const std::uint16_t sample : samples) {
            pending |= static_cast<std::uint32_t>(sample) << pendingBits;
            for (pendingBits += format.sampleBits; pendingBits >= 8; pendingBits -= 8, pending >>= 8) {
                bytes.push_back(static_cast<std::uint8_t>(pending));
            }
        }
        break;
    }
    case Packing::HighBytesFirst:
        for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
            bytes.push_back(static_cast<std::uint8_t>(samples[i] >> 4));
            bytes.push_back(static_cast<std::uint8_t>((samples[i] & 0xF) | (samples[i + 1] & 0xF) << 4));
            bytes.push_back(static_cast<std::uint8_t>(samples[i + 1] >> 4));
        }
        break;
    }
    return bytes;
}

} // namespace

void FrameRenderer::render(const Picture& picture, const PixelFormat& format, std::uint32_t width,
                           std::uint32_t blockId, std::uint32_t rows, std::uint8_t* into) {
    prepare(picture, format, width);
    const std::size_t rowSize = format.rowSize(width);
    for (std::uint32_t y = 0; y < rows; ++y, into += rowSize) {
        const std::uint32_t step = rowStep(picture, blockId, y);
        Bytes& row = m_Rows[step * 2 + y % 2];
        if (row.empty()) {
            row = drawRow(step, y);
        }
        std::copy_n(row.begin(), rowSize, into);
    }
}

void FrameRenderer::prepare(const Picture& picture, const PixelFormat& format, std::uint32_t width) {
    if (m_Format == &format && m_Width == width && m_Picture == picture) {
        return;
    }
    m_Picture = picture;
    m_Format = &format;
    m_Width = width;
    m_Rows.assign(std::size_t{kRampLength} * 2, {});
    for (std::uint32_t color = 0; color < kSampleColorCount; ++color) {
        for (std::uint32_t step = 0; step < kRampLength; ++step) {
            const std::uint32_t sample = sampleAtStep(picture, static_cast<SampleColor>(color), step);
            m_Samples[color][step] = static_cast<std::uint16_t>(sample >> (16 - format.sampleBits));
        }
    }
}

Bytes FrameRenderer::drawRow(std::uint32_t step, std::uint32_t y) const {
    std::vector<std::uint16_t> samples;
    samples.reserve(std::size_t{m_Width} * 3);
    const auto at = [this, step](std::uint32_t x, SampleColor color) {
        return m_Samples[static_cast<std::size_t>(color)][(step + columnStep(m_Picture, x)) % kRampLength];
    };
    const auto addAll = [&](std::uint32_t x, std::initializer_list<SampleColor> colors) {
        for (const SampleColor color : colors) {
            samples.push_back(at(x, color));
        }
    };
    const auto yuvAt = [&at](std::uint32_t x) {
        return yuvOf(at(x, SampleColor::Red), at(x, SampleColor::Green), at(x, SampleColor::Blue));
    };
    for (std::uint32_t x = 0; x < m_Width; ++x) {
        switch (m_Format->kind) {
        case PixelKind::Mono:
            addAll(x, {SampleColor::Grey});
            break;
        case PixelKind::BayerRG:
            addAll(x, {mosaicColorAt(x, y)});
            break;
        case PixelKind::Rgb:
            addAll(x, {SampleColor::Red, SampleColor::Green, SampleColor::Blue});
            break;
        case PixelKind::Bgr:
            addAll(x, {SampleColor::Blue, SampleColor::Green, SampleColor::Red});
            break;
        case PixelKind::Yuv422:
            samples.push_back(yuvAt(x)[0]);
            samples.push_back(yuvAt(x / 2 * 2)[1 + x % 2]);
            break;
        }
    }
    return packSamples(samples, *m_Format);
}

} // namespace GenICamDevices
