// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Imaging/Vectors.h"

/// Loops over the samples of a few rows or of a plane. Samples of 16 bits are in machine byte order and need no
/// alignment; source and target do not overlap.
namespace Imaging {

/// Prefetches bytes that are read soon, which the processor alone would do too late.
inline void prefetch(const void* bytes, std::size_t count) {
    constexpr std::size_t kLineBytes = 64;
    for (std::size_t i = 0; i < count; i += kLineBytes) {
        __builtin_prefetch(static_cast<const unsigned char*>(bytes) + i);
    }
}

/// The largest of @p count 16-bit samples, 0 for none.
std::uint16_t largestSample(const unsigned char* samples, std::size_t count, Vectors vectors = widestVectors());

/// Whether scaleSamples() divides by this number.
constexpr bool isDividedByMultiplying(unsigned largest) {
    return largest >= 256 && largest < 16384;
}

/// Scales @p count 16-bit samples so that @p largest becomes 255, halves rounded up: floor(255 v / largest + 1/2). The
/// result for larger samples is undefined.
/// @pre isDividedByMultiplying(largest)
void scaleSamples(const unsigned char* samples, std::size_t count, unsigned largest, unsigned char* result,
                  Vectors vectors = widestVectors());

/// Exchanges the first and the third sample of each of @p pixels pixels of three samples.
/// @param bytesPerSample 1 or 2
void reverseTriples(const unsigned char* source, std::size_t pixels, std::size_t bytesPerSample, unsigned char* target,
                    Vectors vectors = widestVectors());

/// Computes the grey of @p pixels pixels whose colours lie in planes, as cv::cvtColor() does.
/// @param bytesPerSample 1 or 2
void greyOfPlanes(const unsigned char* red, const unsigned char* green, const unsigned char* blue, std::size_t pixels,
                  std::size_t bytesPerSample, unsigned char* grey, Vectors vectors = widestVectors());

/// Interleaves @p pixels pixels whose samples lie in 3 or 4 planes.
/// @param bytesPerSample 1 or 2
void interleave(const std::array<const unsigned char*, 4>& planes, unsigned channels, std::size_t pixels,
                std::size_t bytesPerSample, unsigned char* target, Vectors vectors = widestVectors());

/// Splits @p pixels pixels of 3 or 4 samples into planes; a plane that is not wanted is null. For Vectors::Wide only.
/// @param bytesPerSample 1 or 2
void splitWidely(const unsigned char* source, unsigned channels, std::size_t pixels, std::size_t bytesPerSample,
                 const std::array<unsigned char*, 4>& planes);

/// Computes the grey of @p pixels pixels of 3 or 4 bytes, as cv::cvtColor() does. For Vectors::Wide only.
void mixBytesWidely(const unsigned char* source, unsigned channels, bool redFirst, std::size_t pixels,
                    unsigned char* grey);

} // namespace Imaging
