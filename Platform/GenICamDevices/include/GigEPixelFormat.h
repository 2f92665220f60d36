// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace GenICamDevices {

/// What the samples of a pixel are, in the order in which they are sent. YUV422: Y U Y V for two pixels.
enum class PixelKind { Mono, BayerRG, Rgb, Bgr, Yuv422 };

/// How samples become bytes.
enum class Packing {
    Bytes,         ///< one byte each
    LittleEndian,  ///< two bytes each, the lower one first
    LowBitsFirst,  ///< without gaps: a sample continues in the lowest free bits of the next byte
    HighBytesFirst ///< two samples of 12 bits: the high byte of each, between them the low bits of the first and the
                   ///< second
};

/// A pixel format of the camera.
struct PixelFormat {
    const char* name;
    std::uint32_t code; ///< of the Pixel Format Naming Convention
    PixelKind kind;
    std::uint32_t sampleBits; ///< significant bits of a sample
    Packing packing;

    constexpr std::uint32_t bitsPerPixel() const { return code >> 16 & 0xFF; }
    constexpr std::size_t rowSize(std::size_t width) const { return width * bitsPerPixel() / 8; }
};

inline constexpr std::array kPixelFormats{
    PixelFormat{"Mono8", 0x01080001, PixelKind::Mono, 8, Packing::Bytes},
    PixelFormat{"Mono10", 0x01100003, PixelKind::Mono, 10, Packing::LittleEndian},
    PixelFormat{"Mono12", 0x01100005, PixelKind::Mono, 12, Packing::LittleEndian},
    PixelFormat{"Mono10p", 0x010A0046, PixelKind::Mono, 10, Packing::LowBitsFirst},
    PixelFormat{"Mono12p", 0x010C0047, PixelKind::Mono, 12, Packing::LowBitsFirst},
    PixelFormat{"Mono12Packed", 0x010C0006, PixelKind::Mono, 12, Packing::HighBytesFirst},
    PixelFormat{"Mono16", 0x01100007, PixelKind::Mono, 16, Packing::LittleEndian},
    PixelFormat{"BayerRG8", 0x01080009, PixelKind::BayerRG, 8, Packing::Bytes},
    PixelFormat{"BayerRG12p", 0x010C0059, PixelKind::BayerRG, 12, Packing::LowBitsFirst},
    PixelFormat{"RGB8", 0x02180014, PixelKind::Rgb, 8, Packing::Bytes},
    PixelFormat{"BGR8", 0x02180015, PixelKind::Bgr, 8, Packing::Bytes},
    PixelFormat{"YUV422_8", 0x02100032, PixelKind::Yuv422, 8, Packing::Bytes},
};

/// @return nullptr if the camera has no such format
constexpr const PixelFormat* findPixelFormat(std::uint32_t code) {
    for (const PixelFormat& format : kPixelFormats) {
        if (format.code == code) {
            return &format;
        }
    }
    return nullptr;
}

} // namespace GenICamDevices
