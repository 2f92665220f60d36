// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

/// Colours and greys of the pixels of one row of a mosaic that have neighbours on both sides, as OpenCV computes them.
/// Only for source files that are compiled with the attribute QUILL_WIDE_VECTORS.
namespace Imaging::MosaicRows {

/// Columns assembled together in the first-level cache: few, so that the processor still reads ahead while it writes.
constexpr int kPieceColumns = 1024;

/// Pairs of pixels of which grey is computed together.
constexpr int kPairsPerVector = 16;

/// Weights of OpenCV's grey, with the sum 2^14.
constexpr std::uint32_t kRedWeight = 4899;
constexpr std::uint32_t kGreenWeight = 9617;
constexpr std::uint32_t kBlueWeight = 1868;

/// Two neighbouring pixels as one number of double width, which leaves room for sums.
template <typename Sample>
using Pair = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, std::uint32_t>;

/// A row of a mosaic with the rows above and below, from a pixel on that has left neighbours.
template <typename Sample>
struct MosaicRow {
    const Sample* above;
    const Sample* here;
    const Sample* below;
    bool greenFirst; ///< the first pixel is a green one

    MosaicRow from(int column) const {
        return {above + column, here + column, below + column, greenFirst != (column % 2 != 0)};
    }
};

/// The destinations of a row's pixels: the colour of its own sites, green, and the colour of the neighbouring rows'
/// sites.
template <typename Sample>
struct ColorRow {
    Sample* own;
    Sample* green;
    Sample* other;

    ColorRow from(int column) const { return {own + column, green + column, other + column}; }
};

template <typename Sample>
struct GreyRow {
    Sample* grey;
    std::uint32_t ownWeight;
    std::uint32_t otherWeight;

    GreyRow from(int column) const { return {grey + column, ownWeight, otherWeight}; }
};

/// Sets all bits of every second sample.
template <typename Sample>
struct AlternatingMasks {
    Sample masks[kPieceColumns + 1]{};

    constexpr AlternatingMasks() {
        for (int i = 0; i <= kPieceColumns; i += 2) {
            masks[i] = std::numeric_limits<Sample>::max();
        }
    }
};
template <typename Sample>
constexpr AlternatingMasks<Sample> kAlternating;

/// The mean of two samples, halves rounded up, without leaving their width.
template <typename Sample>
[[gnu::always_inline]] inline Sample meanOf(Sample a, Sample b) {
    if constexpr (sizeof(Sample) == 1) {
        return static_cast<Sample>((a + b + 1) >> 1); // known to g++ as one instruction
    } else {
        return static_cast<Sample>((a | b) - static_cast<Sample>(static_cast<Sample>(a ^ b) >> 1));
    }
}

/// The mean of four samples, halves rounded up, without leaving their width.
template <typename Sample>
[[gnu::always_inline]] inline Sample meanOf(Sample a, Sample b, Sample c, Sample d) {
    const Sample ab = meanOf(a, b), cd = meanOf(c, d);
    const auto roundedTwice = static_cast<Sample>(((a ^ b) | (c ^ d)) & (ab ^ cd) & 1);
    return static_cast<Sample>(meanOf(ab, cd) - roundedTwice);
}

template <typename Sample>
[[gnu::always_inline]] inline Sample choose(Sample mask, Sample set, Sample clear) {
    return static_cast<Sample>((set & mask) | (clear & ~mask));
}

/// A pair of pixels, separated into the green and the coloured one, with sums of their neighbours.
template <typename Sample, bool GreenFirst>
struct Sites {
    using Lane = Pair<Sample>;

    Lane colored;
    Lane cross;   ///< the four adjacent to the coloured pixel
    Lane corners; ///< the four diagonal to it
    Lane green;
    Lane vertical;   ///< the two above and below the green pixel
    Lane horizontal; ///< the two beside it

    [[gnu::always_inline]] static Sites read(const Sample* above, const Sample* here, const Sample* below) {
        // The neighbour of the coloured pixel other than the green pixel of the pair, and the reverse.
        constexpr int kBesideColored = GreenFirst ? 1 : -1;
        constexpr int kBesideGreen = -kBesideColored;
        const Lane up = load(above), pair = load(here), down = load(below);
        Sites sites;
        sites.colored = coloredOf(pair);
        sites.green = greenOf(pair);
        sites.vertical = greenOf(up) + greenOf(down);
        sites.horizontal = sites.colored + greenOf(load(here + kBesideGreen));
        sites.cross = coloredOf(up) + coloredOf(down) + sites.green + coloredOf(load(here + kBesideColored));
        sites.corners =
            sites.vertical + coloredOf(load(above + kBesideColored)) + coloredOf(load(below + kBesideColored));
        return sites;
    }

    [[gnu::always_inline]] static void store(Sample* samples, std::uint32_t colored, std::uint32_t green) {
        const auto pair = static_cast<Lane>(GreenFirst ? green | (colored << kBits) : colored | (green << kBits));
        std::memcpy(samples, &pair, sizeof pair);
    }

private:
    static constexpr int kBits = std::numeric_limits<Sample>::digits;

    [[gnu::always_inline]] static Lane load(const Sample* samples) {
        Lane pair = 0;
        std::memcpy(&pair, samples, sizeof pair);
        return pair;
    }
    static Lane first(Lane pair) { return static_cast<Sample>(pair); }
    static Lane second(Lane pair) { return static_cast<Lane>(pair >> kBits); }
    static Lane coloredOf(Lane pair) { return GreenFirst ? second(pair) : first(pair); }
    static Lane greenOf(Lane pair) { return GreenFirst ? first(pair) : second(pair); }
};

// Without aliases, which prevent vectorisation: g++ recognises that for parameters, through one level of inlining.
template <typename Sample>
[[gnu::always_inline]] inline void fillColors(const Sample* __restrict above, const Sample* __restrict here,
                                              const Sample* __restrict below, const Sample* __restrict greens,
                                              int pixels, Sample* __restrict own, Sample* __restrict green,
                                              Sample* __restrict other) {
    for (int i = 0; i < pixels; ++i) {
        const Sample left = here[i - 1], right = here[i + 1];
        own[i] = choose(greens[i], meanOf(left, right), here[i]);
        green[i] = choose(greens[i], here[i], meanOf(left, right, above[i], below[i]));
        other[i] = choose(greens[i], meanOf(above[i], below[i]),
                          meanOf(above[i - 1], below[i - 1], above[i + 1], below[i + 1]));
    }
}

template <typename Sample, bool GreenFirst>
[[gnu::always_inline]] inline void fillGreys(const Sample* __restrict above, const Sample* __restrict here,
                                             const Sample* __restrict below, int pairs, Sample* __restrict grey,
                                             std::uint32_t ownWeight, std::uint32_t otherWeight) {
    using S = Sites<Sample, GreenFirst>;
    for (int i = 0; i < 2 * pairs; i += 2) {
        const S sites = S::read(above + i, here + i, below + i);
        const std::uint32_t colored =
            sites.colored * (4 * ownWeight) + sites.cross * kGreenWeight + sites.corners * otherWeight;
        const std::uint32_t green =
            sites.green * (2 * kGreenWeight) + sites.horizontal * ownWeight + sites.vertical * otherWeight;
        S::store(grey + i, (colored + (1U << 15)) >> 16, (green + (1U << 14)) >> 15);
    }
}

/// Bytes side by side as words, of which the lower byte is the left one.
[[gnu::always_inline]] inline std::uint16_t loadWord(const std::uint8_t* bytes) {
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}
[[gnu::always_inline]] inline std::uint16_t upperHalf(std::uint16_t number, std::uint16_t weight) {
    return static_cast<std::uint16_t>((static_cast<std::uint32_t>(number) * weight) >> 16);
}

/// Greys of bytes as OpenCV's vectors compute them: each product loses its lower half, and the green bytes above and
/// below keep a bit of their left neighbours. The first pixel is a coloured one.
[[gnu::always_inline]] inline void fillRoughGreys(const std::uint8_t* __restrict above,
                                                  const std::uint8_t* __restrict here,
                                                  const std::uint8_t* __restrict below, int pairs,
                                                  std::uint8_t* __restrict grey, std::uint16_t ownWeight,
                                                  std::uint16_t otherWeight) {
    using Word = std::uint16_t;
    // Factors of two are in the weights as far as these stay words.
    constexpr auto kGreen = static_cast<Word>(2 * kGreenWeight), kTwiceGreen = static_cast<Word>(2 * kGreen);
    const auto twiceOther = static_cast<Word>(2 * otherWeight), fourOther = static_cast<Word>(4 * otherWeight);
    const auto fourOwn = static_cast<Word>(4 * ownWeight);
    for (int i = 0; i < 2 * pairs; i += 2) {
        const Word up = loadWord(above + i - 1), row = loadWord(here + i - 1), down = loadWord(below + i - 1);
        const Word up2 = loadWord(above + i + 1), row2 = loadWord(here + i + 1), down2 = loadWord(below + i + 1);
        const auto corners = static_cast<Word>((up & 0xFF) + (down & 0xFF));
        const auto corners2 = static_cast<Word>((up2 & 0xFF) + (down2 & 0xFF));
        const auto left = static_cast<Word>(row & 0xFF), right = static_cast<Word>(row2 & 0xFF);
        const auto own = static_cast<Word>(row >> 8), own2 = static_cast<Word>(row2 >> 8);
        const auto cross = static_cast<Word>((up >> 7) + (down >> 7) + ((left + right) << 1));
        const auto colored =
            static_cast<Word>(upperHalf(static_cast<Word>(corners + corners2), twiceOther) + upperHalf(cross, kGreen) +
                              upperHalf(static_cast<Word>(own << 3), ownWeight));
        const auto green =
            static_cast<Word>(upperHalf(corners2, fourOther) + upperHalf(static_cast<Word>(right << 2), kTwiceGreen) +
                              upperHalf(static_cast<Word>(own + own2), fourOwn));
        const auto both = static_cast<Word>((colored >> 2) | (green >> 2 << 8));
        std::memcpy(grey + i, &both, sizeof both);
    }
}

template <typename Sample>
void colorsPortably(const Sample* __restrict above, const Sample* __restrict here, const Sample* __restrict below,
                    const Sample* __restrict greens, int pixels, Sample* __restrict own, Sample* __restrict green,
                    Sample* __restrict other) {
    fillColors(above, here, below, greens, pixels, own, green, other);
}

template <typename Sample, bool GreenFirst>
void greysPortably(const Sample* __restrict above, const Sample* __restrict here, const Sample* __restrict below,
                   int pairs, Sample* __restrict grey, std::uint32_t ownWeight, std::uint32_t otherWeight) {
    fillGreys<Sample, GreenFirst>(above, here, below, pairs, grey, ownWeight, otherWeight);
}

template <typename Sample, bool GreenFirst>
QUILL_WIDE_VECTORS void greysWidely(const Sample* __restrict above, const Sample* __restrict here,
                                    const Sample* __restrict below, int pairs, Sample* __restrict grey,
                                    std::uint32_t ownWeight, std::uint32_t otherWeight) {
    fillGreys<Sample, GreenFirst>(above, here, below, pairs, grey, ownWeight, otherWeight);
}

QUILL_WIDE_VECTORS inline void roughGreysWidely(const std::uint8_t* __restrict above,
                                                const std::uint8_t* __restrict here,
                                                const std::uint8_t* __restrict below, int pairs,
                                                std::uint8_t* __restrict grey, std::uint16_t ownWeight,
                                                std::uint16_t otherWeight) {
    fillRoughGreys(above, here, below, pairs, grey, ownWeight, otherWeight);
}

/// Calls @p work with the begin and the number of items, whole vectors of them: the last vector overlaps the one
/// before, since a remainder would be computed item by item.
template <typename Work>
void forWholeVectors(int items, int perVector, Work work) {
    const int whole = items / perVector * perVector;
    if (whole != 0) {
        work(0, whole);
    }
    if (items != whole) {
        const int last = whole == 0 ? items : perVector;
        work(items - last, last);
    }
}

template <typename Sample>
void fillPixels(const MosaicRow<Sample>& row, int pixels, const ColorRow<Sample>& result) {
    constexpr int kPerVector = 32 / sizeof(Sample);
    for (int piece = 0; piece < pixels; piece += kPieceColumns) {
        forWholeVectors(std::min(kPieceColumns, pixels - piece), kPerVector, [&](int begin, int count) {
            const MosaicRow<Sample> from = row.from(piece + begin);
            const ColorRow<Sample> to = result.from(piece + begin);
            colorsPortably(from.above, from.here, from.below, kAlternating<Sample>.masks + (from.greenFirst ? 0 : 1),
                           count, to.own, to.green, to.other);
        });
    }
}

template <typename Sample>
void fillPairs(const MosaicRow<Sample>& row, int pairs, const GreyRow<Sample>& result, bool wide) {
    static constexpr decltype(&greysPortably<Sample, false>) kFunctions[2][2] = {
        {greysPortably<Sample, false>, greysPortably<Sample, true>},
        {greysWidely<Sample, false>, greysWidely<Sample, true>}};
    forWholeVectors(pairs, kPairsPerVector, [&](int begin, int count) {
        const MosaicRow<Sample> from = row.from(2 * begin);
        kFunctions[wide][from.greenFirst](from.above, from.here, from.below, count, result.grey + 2 * begin,
                                          result.ownWeight, result.otherWeight);
    });
}

template <typename Sample>
void fillPixels(const MosaicRow<Sample>& row, int pixels, const GreyRow<Sample>& result, bool wide) {
    fillPairs(row, pixels / 2, result, wide);
    if (pixels % 2 != 0) { // the last pair overlaps
        fillPairs(row.from(pixels - 2), 1, result.from(pixels - 2), wide);
    }
}

/// Computes bytes roughly where OpenCV does: all but up to one pixel at the begin and 4 to 17 at the end of a row.
inline void fillBytes(const MosaicRow<std::uint8_t>& row, int pixels, const GreyRow<std::uint8_t>& result) {
    constexpr int kPixelsOfVector = 14, kReadByVector = 18;
    const int first = row.greenFirst ? 1 : 0;
    const int vectors = pixels < kReadByVector ? 0 : (pixels - kReadByVector) / kPixelsOfVector + 1;
    const int rough = vectors * kPixelsOfVector;
    if (first != 0) {
        fillPairs(row, 1, result, true);
    }
    forWholeVectors(rough / 2, kPairsPerVector, [&](int begin, int count) {
        const MosaicRow<std::uint8_t> from = row.from(first + 2 * begin);
        roughGreysWidely(from.above, from.here, from.below, count, result.grey + first + 2 * begin,
                         static_cast<std::uint16_t>(2 * result.ownWeight),
                         static_cast<std::uint16_t>(2 * result.otherWeight));
    });
    constexpr int kExactVector = 2 * kPairsPerVector;
    const int exact = pixels - first - rough;
    if (exact > 0 && pixels >= kExactVector) { // a whole vector, since few pixels would be computed one by one
        std::array<std::uint8_t, kExactVector> greys;
        fillPairs(row.from(pixels - kExactVector), kPairsPerVector,
                  {greys.data(), result.ownWeight, result.otherWeight}, true);
        std::memcpy(result.grey + pixels - exact, greys.data() + kExactVector - exact, static_cast<std::size_t>(exact));
    } else if (exact > 0) {
        fillPixels(row.from(pixels - exact), exact, result.from(pixels - exact), true);
    }
}

} // namespace Imaging::MosaicRows
