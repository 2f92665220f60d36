// SPDX-License-Identifier: Apache-2.0

#include "Imaging/PackedSamples.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Support/Images.h"

namespace {

using namespace Imaging;
using Bytes = std::vector<unsigned char>;

Bytes randomBytes(std::size_t count) {
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), std::independent_bits_engine<std::mt19937, 8, unsigned char>());
    return bytes;
}

/// The bytes of samples between two guards, the first of which moves them.
Bytes guarded(std::size_t guard, const std::vector<std::uint16_t>& samples) {
    Bytes bytes(guard, 0xA5);
    const auto* const first = reinterpret_cast<const unsigned char*>(samples.data());
    bytes.insert(bytes.end(), first, first + 2 * samples.size());
    bytes.insert(bytes.end(), 64, 0x5A);
    return bytes;
}

/// The number of a bit of a sample among the packed bits.
/// @param inPairs two samples share the second of three bytes, instead of a stream of bits
std::size_t placeOfBit(std::size_t bits, bool inPairs, std::size_t sample, std::size_t bit) {
    const std::size_t second = sample % 2, lowBits = bits - 8;
    const std::size_t placeInPair = bit < lowBits ? 8 + 4 * second + bit : 16 * second + bit - lowBits;
    return inPairs ? sample / 2 * 24 + placeInPair : sample * bits + bit;
}

void expectUnpackedBitByBit(SamplePacking packing, std::size_t bits, bool inPairs, std::size_t count) {
    SCOPED_TRACE("packing " + std::to_string(static_cast<int>(packing)) + ", samples " + std::to_string(count));
    const Bytes packed = randomBytes((count * (inPairs ? 12 : bits) + 7) / 8);
    ASSERT_EQ(getPackedBytes(packing, count), packed.size());
    std::vector<std::uint16_t> expected(count); // shifted up to 16 bits
    for (std::size_t i = 0; i < count * bits; ++i) {
        const std::size_t bit = i % bits, place = placeOfBit(bits, inPairs, i / bits, bit);
        expected[i / bits] |= static_cast<std::uint16_t>((packed[place / 8] >> place % 8 & 1) << (16 - bits + bit));
    }
    for (std::size_t offset = 0; offset < 4; ++offset) {
        Bytes source(offset); // ends with the last packed byte, so that a sanitizer sees a read beyond
        source.insert(source.end(), packed.begin(), packed.end());
        for (const Vectors vectors : TestSupport::kindsOfVectors()) {
            Bytes result = guarded(64 + offset, std::vector<std::uint16_t>(count));
            auto* const samples = reinterpret_cast<std::uint16_t*>(&result[64 + offset]);
            unpackSamples(packing, source.data() + offset, count, samples, vectors);
            shiftSamplesUp(samples, count, static_cast<unsigned>(16 - bits), vectors);
            ASSERT_TRUE(result == guarded(64 + offset, expected)) << offset;
        }
    }
}

TEST(PackedSamples, AreUnpackedBitByBitAndShiftedWithEitherKindOfVectors) {
    for (std::size_t count = 0; count <= 100'003; count += count < 203 ? 1 : 24'950) {
        expectUnpackedBitByBit(SamplePacking::TenP, 10, false, count);
        expectUnpackedBitByBit(SamplePacking::TwelveP, 12, false, count);
        expectUnpackedBitByBit(SamplePacking::GigETen, 10, true, count);
        expectUnpackedBitByBit(SamplePacking::GigETwelve, 12, true, count);
    }
}

TEST(PackedSamples, OfAnImpossibleNumberTakeMoreThanAnyBuffer) {
    constexpr std::size_t kLargest = ~std::size_t{0};
    EXPECT_EQ(getPackedBytes(SamplePacking::TenP, kLargest / 10 * 8 - 1), kLargest / 10 * 10 - 1);
    EXPECT_EQ(getPackedBytes(SamplePacking::TenP, kLargest / 10 * 8 + 8), kLargest);
}

TEST(Yuv422, BecomesRgbByTheFormula) {
    for (const auto& [width, height] : {std::pair{0, 3}, {2, 1}, {6, 5}, {1204, 901}}) { // the last in bands
        const auto samples = static_cast<std::size_t>(3 * width * height);
        const Bytes yuv = randomBytes(samples / 3 * 2);
        for (const std::size_t luma : {0U, 1U}) {
            Bytes rgb(samples + 1, 0xA5);
            convertYuv422ToRgb(yuv.data(), luma == 1, width, height, rgb.data());
            double largestError = std::abs(rgb.back() - 0xA5);
            for (std::size_t i = 0; i < samples; ++i) {
                const unsigned char* const pair = &yuv[i / 6 * 4];
                const double u = pair[1 - luma] - 128, v = pair[3 - luma] - 128;
                const double chroma[] = {1.402 * v, -0.344 * u - 0.714 * v, 1.772 * u};
                const double color = pair[i / 3 % 2 * 2 + luma] + chroma[i % 3];
                largestError = std::max(largestError, std::abs(std::clamp(color, 0.0, 255.0) - rgb[i]));
            }
            EXPECT_LE(largestError, 1) << width << " x " << height;
        }
    }
    EXPECT_THROW(convertYuv422ToRgb(nullptr, true, 3, 2, nullptr), std::invalid_argument);
}

} // namespace
