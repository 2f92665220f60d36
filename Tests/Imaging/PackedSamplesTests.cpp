// SPDX-License-Identifier: Apache-2.0

#include "Imaging/PackedSamples.h"

#include <algorithm>
#include <random>

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

} // namespace
