// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "../Export.h"

namespace Utilities {

/// A part of a boot image that is loaded to one place in the camera's RAM.
struct BootImageSection {
    std::uint32_t address = 0; ///< load address in RAM
    std::size_t offset = 0;    ///< of its first byte in the image
    std::size_t length = 0;    ///< bytes, a multiple of 4
};

/// The structure of a boot image: a header of four bytes (`C`, `Y`, image control, 0xB0), then sections, each with its
/// length in 32-bit words and its load address, and last a section of no words whose address is the program's entry
/// point. Numbers are little-endian. Data after the last section is ignored.
struct BootImage {
    std::vector<BootImageSection> sections;
    std::uint32_t entryAddress = 0;
    std::size_t size = 0; ///< bytes up to the end of the last section
};

/// Parses a boot image to its end. Thread-safe.
/// @throws std::invalid_argument "No data provided." or "Invalid image file."  the header is missing, or a section or
///     the end of the sections lies beyond the data
QUILL_API BootImage readBootImage(const std::vector<unsigned char>& data);

} // namespace Utilities
