// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Imaging/ImageFormat.h"
#include "Imaging/PackedSamples.h"

namespace GenICamAdapter {

/// How the bytes of a frame become those of an image.
enum class Unpacking {
    None,   ///< they are those of the image
    Packed, ///< samples without gaps
    Shift,  ///< samples that become 16 bits wide
    Uyvy,   ///< luma and chroma, chroma first
    Yuyv    ///< luma and chroma, luma first
};

/// A pixel format of the Pixel Format Naming Convention (PFNC).
struct PixelFormat {
    std::uint32_t code;
    const char* name;
    Imaging::IMAGE_FORMAT layout;
    unsigned depth; ///< bits of a sample of the image
    Unpacking unpacking;
    Imaging::SamplePacking packing; ///< of Unpacking::Packed

    /// Bytes of a frame; nothing beyond 64 bits.
    std::optional<std::size_t> frameBytes(std::uint32_t width, std::uint32_t height) const;
    /// Bytes of the image; nothing beyond 64 bits.
    std::optional<std::size_t> imageBytes(std::uint32_t width, std::uint32_t height) const;
    /// Writes the image of a frame that needs unpacking.
    /// @param frame frameBytes() bytes
    /// @param image imageBytes() bytes
    void unpack(const unsigned char* frame, std::uint32_t width, std::uint32_t height, unsigned char* image) const;
};

/// The format of a code, or null for one that this library cannot interpret.
const PixelFormat* findPixelFormat(std::uint32_t code);
/// The format of a name, such as "BayerRG12p"; also of the longer names that some cameras use.
const PixelFormat* findPixelFormat(const std::string& name);

/// The colour filter layout of a pixel format: "MONO", "RGGB", ..., or the format's own name.
std::string colorFormatOf(const std::string& pixelFormat);

} // namespace GenICamAdapter
