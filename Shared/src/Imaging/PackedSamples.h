// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "Export.h"
#include "Imaging/Vectors.h"

/// Frames as machine-vision cameras send them, made into samples that images hold. Source and target do not overlap.
namespace Imaging {

/// How samples of 10 or 12 bits share bytes. Rows follow each other without padding, so that a row may begin within a
/// byte; byte 0 below is the first byte of a group of samples.
enum class SamplePacking {
    TenP,      ///< Mono10p, BayerXX10p: a stream of bits, least significant first; 4 samples in 5 bytes
    TwelveP,   ///< Mono12p, BayerXX12p: a stream of bits, least significant first; 2 samples in 3 bytes
    GigETen,   ///< Mono10Packed, BayerXX10Packed: bytes 0 and 2 are the upper 8 bits of 2 samples, and byte 1 holds the
               ///< lower bits, those of the first sample from bit 0 on, those of the second from bit 4 on
    GigETwelve ///< Mono12Packed, BayerXX12Packed: as GigETen, with 4 lower bits
};

/// The bytes that hold @p samples packed samples, rounded up to whole bytes. The largest std::size_t if that is too
/// small for their number, so that a comparison with the size of a buffer refuses them.
QUILL_ADAPTER_API std::size_t getPackedBytes(SamplePacking packing, std::size_t samples);

/// Unpacks @p samples samples into the low bits of words in machine byte order. Reads getPackedBytes() bytes and writes
/// 2 * samples bytes, which need no alignment. Bits that belong to no sample are ignored.
QUILL_ADAPTER_API void unpackSamples(SamplePacking packing, const unsigned char* packed, std::size_t samples,
                                     std::uint16_t* unpacked, Vectors vectors = widestVectors());

/// Multiplies @p count samples in machine byte order by 2^bits, as from 14 to 16 bits; higher bits are lost. They need
/// no alignment.
/// @param bits at most 15
QUILL_ADAPTER_API void shiftSamplesUp(std::uint16_t* samples, std::size_t count, unsigned bits,
                                      Vectors vectors = widestVectors());

/// Converts pixels of 8 bits, two of which share their chroma, to RGB by the formula of BT.601 for luma and chroma of
/// the full range, 0 to 255, as GigE Vision defines them. Rows have no padding. Large images are converted on several
/// threads.
/// @param yuv 2 * width * height bytes
/// @param uyvy whether chroma comes first (U Y V Y, YUV422_8_UYVY), or luma (Y U Y V, YUV422_8)
/// @param rgb 3 * width * height bytes
/// @throws std::invalid_argument the width is odd, or a size negative; nothing is written
QUILL_ADAPTER_API void convertYuv422ToRgb(const unsigned char* yuv, bool uyvy, int width, int height,
                                          unsigned char* rgb);

} // namespace Imaging
