// SPDX-License-Identifier: Apache-2.0

#include "Imaging/PackedSamples.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <stdexcept>

#include <opencv2/imgproc.hpp>

#include "Imaging/ByteOrder.h"
#include "Imaging/RowBands.h"
#include "Imaging/VectorLoops.h"

namespace Imaging {

namespace {

/// After so many samples each packing begins with a whole byte again.
constexpr std::size_t kGroup = 8;

struct PackingDescription {
    unsigned bits;          ///< of a sample
    std::size_t groupBytes; ///< of kGroup samples
    std::uint16_t highMask; ///< bits of a sample that lie in a byte of their own; none in a stream of bits
    std::uint16_t lowMask;  ///< the other bits of a sample
};

/// By number of the packing.
constexpr std::array<PackingDescription, 4> kPackings{{
    {10, 10, 0x000, 0x3FF},
    {12, 12, 0x000, 0xFFF},
    {10, 12, 0x3FC, 0x003},
    {12, 12, 0xFF0, 0x00F},
}};

constexpr const PackingDescription& describePacking(SamplePacking packing) {
    return kPackings[static_cast<std::size_t>(packing)];
}

/// The word in which a sample of a group lies.
struct Window {
    std::size_t lowByte; ///< number of a byte in the group
    std::size_t highByte;
    unsigned shift; ///< of the low bits; the high bits end with the word
};

constexpr Window windowOf(SamplePacking packing, std::size_t sample) {
    if (describePacking(packing).highMask != 0) {
        const std::size_t pairBegin = sample / 2 * 3;
        const std::size_t second = sample % 2;
        return {pairBegin + 1, pairBegin + 2 * second, static_cast<unsigned>(4 * second)};
    }
    const std::size_t firstBit = describePacking(packing).bits * sample;
    return {firstBit / 8, firstBit / 8 + 1, static_cast<unsigned>(firstBit % 8)};
}

// --- Sample by sample: on every machine, without reading beyond the last one ---

template <SamplePacking packing>
std::uint16_t sampleAt(const unsigned char* packed, std::size_t i) {
    constexpr PackingDescription kPacking = describePacking(packing);
    const unsigned char* const group = packed + i / kGroup * kPacking.groupBytes;
    const Window window = windowOf(packing, i % kGroup);
    const unsigned word = group[window.lowByte] | static_cast<unsigned>(group[window.highByte]) << 8;
    return static_cast<std::uint16_t>((word >> (16 - kPacking.bits) & kPacking.highMask) |
                                      (word >> window.shift & kPacking.lowMask));
}

// --- Twice four samples, each four in a word of 64 bits: on little-endian machines ---

using TwoWords [[gnu::vector_size(16)]] = std::uint64_t;
constexpr std::size_t kSamplesOfWord = kGroup / 2;

/// Bits that move by the same number of places.
struct BitMove {
    std::uint64_t from = 0;
    int up = 0;
};

constexpr std::array<BitMove, 6> bitMovesOf(SamplePacking packing) {
    const PackingDescription& description = describePacking(packing);
    std::array<BitMove, 6> moves{};
    for (unsigned sample = 0; sample < kSamplesOfWord; ++sample) {
        const Window window = windowOf(packing, sample);
        for (unsigned bit = 0; bit < description.bits; ++bit) {
            const bool low = (description.lowMask >> bit & 1U) != 0;
            const unsigned bitOfWindow = bit + (low ? window.shift : 16 - description.bits);
            const std::size_t from = 8 * (bitOfWindow < 8 ? window.lowByte : window.highByte) + bitOfWindow % 8;
            const int up = static_cast<int>(16 * sample + bit) - static_cast<int>(from);
            auto move = moves.begin();
            while (move->from != 0 && move->up != up) {
                ++move;
            }
            move->from |= std::uint64_t{1} << from;
            move->up = up;
        }
    }
    return moves;
}

template <SamplePacking packing>
[[gnu::always_inline]] inline std::size_t unpackWords(const unsigned char* __restrict packed, std::size_t samples,
                                                      unsigned char* __restrict unpacked) {
    static constexpr auto kMoves = bitMovesOf(packing);
    constexpr std::size_t kGroupBytes = describePacking(packing).groupBytes;
    constexpr std::size_t kSecondWord = kGroupBytes / 2;
    const unsigned char* const end = packed + getPackedBytes(packing, samples);
    std::size_t i = 0;
    for (; end - packed >= std::ptrdiff_t{kSecondWord + sizeof(std::uint64_t)}; packed += kGroupBytes) {
        std::uint64_t first = 0, second = 0;
        std::memcpy(&first, packed, sizeof first);
        std::memcpy(&second, packed + kSecondWord, sizeof second);
        const TwoWords words{first, second};
        TwoWords result{};
        for (const BitMove& move : kMoves) {
            const TwoWords moved = words & move.from;
            result |= move.up < 0 ? moved >> -move.up : moved << move.up;
        }
        std::memcpy(unpacked + 2 * i, &result, sizeof result);
        i += kGroup;
    }
    return i;
}

template <SamplePacking packing>
void unpack(const unsigned char* packed, std::size_t samples, unsigned char* unpacked, Vectors vectors) {
    std::size_t i = machineIsLittleEndian() ? run<unpackWords<packing>>(vectors, packed, samples, unpacked) : 0;
    for (; i < samples; ++i) {
        const std::uint16_t sample = sampleAt<packing>(packed, i);
        std::memcpy(unpacked + sizeof sample * i, &sample, sizeof sample);
    }
}

/// By number of the packing.
constexpr decltype(&unpack<SamplePacking::TenP>) kUnpackers[] = {
    unpack<SamplePacking::TenP>, unpack<SamplePacking::TwelveP>, unpack<SamplePacking::GigETen>,
    unpack<SamplePacking::GigETwelve>};

[[gnu::always_inline]] inline void multiplySamples(unsigned char* samples, std::size_t count, std::uint16_t factor) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, samples + sizeof sample * i, sizeof sample);
        sample = static_cast<std::uint16_t>(sample * factor);
        std::memcpy(samples + sizeof sample * i, &sample, sizeof sample);
    }
}

} // namespace

std::size_t getPackedBytes(SamplePacking packing, std::size_t samples) {
    const std::size_t groupBytes = describePacking(packing).groupBytes;
    constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
    const std::size_t groups = samples / kGroup;
    if (groups >= kLargest / groupBytes) {
        return kLargest;
    }
    return groups * groupBytes + (samples % kGroup * groupBytes + kGroup - 1) / kGroup;
}

void unpackSamples(SamplePacking packing, const unsigned char* packed, std::size_t samples, std::uint16_t* unpacked,
                   Vectors vectors) {
    kUnpackers[static_cast<std::size_t>(packing)](packed, samples, reinterpret_cast<unsigned char*>(unpacked), vectors);
}

void shiftSamplesUp(std::uint16_t* samples, std::size_t count, unsigned bits, Vectors vectors) {
    const auto factor = static_cast<std::uint16_t>(1U << bits);
    run<multiplySamples>(vectors, reinterpret_cast<unsigned char*>(samples), count, factor);
}

void convertYuv422ToRgb(const unsigned char* yuv, bool uyvy, int width, int height, unsigned char* rgb) {
    constexpr std::size_t kPixelsAtOnce = 2048; // stay in the nearest cache
    if (width < 0 || height < 0 || width % 2 != 0) {
        throw std::invalid_argument("The width of an image of YUV 4:2:2 must be even, and no size negative.");
    }
    const std::size_t luma = uyvy ? 1 : 0;
    const std::size_t chroma = 1 - luma;
    const auto pixelsOf = [width](int rows) {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(rows);
    };
    forRowBands({0, height}, 5 * pixelsOf(height), [&](const cv::Range& rows) {
        std::array<unsigned char, 3 * kPixelsAtOnce> expanded; // Y, V, U: OpenCV's order
        std::size_t count = 0;
        for (std::size_t pixel = pixelsOf(rows.start); pixel < pixelsOf(rows.end); pixel += count) {
            count = std::min(kPixelsAtOnce, pixelsOf(rows.end) - pixel);
            for (std::size_t i = 0; i < count; i += 2) {
                const unsigned char* const pair = yuv + 2 * (pixel + i);
                unsigned char* const target = &expanded[3 * i];
                target[0] = pair[luma];
                target[3] = pair[luma + 2];
                target[1] = target[4] = pair[chroma + 2];
                target[2] = target[5] = pair[chroma];
            }
            // As a single row, for which OpenCV starts no parallel loop.
            const cv::Mat source(1, static_cast<int>(count), CV_8UC3, expanded.data());
            cv::Mat result(1, static_cast<int>(count), CV_8UC3, rgb + 3 * pixel);
            cv::cvtColor(source, result, cv::COLOR_YCrCb2RGB);
        }
    });
}

} // namespace Imaging
