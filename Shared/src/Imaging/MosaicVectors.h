// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Imaging/MosaicRows.h"
#include "Imaging/WideVectors.h"

/// Colours of the pixels of one row of a mosaic that have neighbours on both sides, in wide vectors that go straight
/// from the mosaic into the result. Only for source files that are compiled with the attribute QUILL_WIDE_VECTORS.
namespace Imaging::MosaicRows {

/// The mean of two samples in each lane, halves rounded up.
template <typename Sample>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> meanOfLanes(WideOf<Sample> a, WideOf<Sample> b) {
#ifdef __x86_64__
    if constexpr (sizeof(Sample) == 1) {
        using Lanes = WideOf<char>;
        return reinterpret_cast<WideOf<Sample>>(
            __builtin_ia32_pavgb256(reinterpret_cast<Lanes>(a), reinterpret_cast<Lanes>(b)));
    } else {
        using Lanes = WideOf<short>;
        return reinterpret_cast<WideOf<Sample>>(
            __builtin_ia32_pavgw256(reinterpret_cast<Lanes>(a), reinterpret_cast<Lanes>(b)));
    }
#else
    return (a | b) - ((a ^ b) >> 1);
#endif
}

/// The mean of four samples in each lane, halves rounded up, from the means @p ab and @p cd of two each.
template <typename Sample>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> meanOfLanes(WideOf<Sample> a, WideOf<Sample> b,
                                                                            WideOf<Sample> ab, WideOf<Sample> c,
                                                                            WideOf<Sample> d, WideOf<Sample> cd) {
    const WideOf<Sample> one = WideOf<Sample>{} + 1;
    const WideOf<Sample> roundedTwice = ((a ^ b) | (c ^ d)) & (ab ^ cd) & one;
    return meanOfLanes<Sample>(ab, cd) - roundedTwice;
}

/// Takes the lanes of green sites from one vector, and those of the others from another.
template <typename Sample, bool greenFirst, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> bySite(WideOf<Sample> green, WideOf<Sample> colored,
                                                                       std::index_sequence<Lane...>) {
    return __builtin_shufflevector(green, colored,
                                   ((Lane % 2 == 0) == greenFirst ? Lane : kWideLanes<Sample> + Lane)...);
}

template <typename Sample>
struct ColorVectors {
    WideOf<Sample> own;
    WideOf<Sample> green;
    WideOf<Sample> other;
};

/// The colours of as many pixels as a vector has lanes.
template <typename Sample, bool greenFirst>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline ColorVectors<Sample>
colorsOfLanes(const Sample* above, const Sample* here, const Sample* below) {
    using Vector = WideOf<Sample>;
    constexpr AllLanes<Sample> kAll;
    const Vector up = loadWide<Sample>(above), down = loadWide<Sample>(below), left = loadWide<Sample>(here - 1),
                 right = loadWide<Sample>(here + 1), site = loadWide<Sample>(here);
    const Vector vertical = meanOfLanes<Sample>(up, down), horizontal = meanOfLanes<Sample>(left, right);
    const Vector cross = meanOfLanes<Sample>(left, right, horizontal, up, down, vertical);
    const Vector upLeft = loadWide<Sample>(above - 1), downLeft = loadWide<Sample>(below - 1),
                 upRight = loadWide<Sample>(above + 1), downRight = loadWide<Sample>(below + 1);
    const Vector corners = meanOfLanes<Sample>(upLeft, downLeft, meanOfLanes<Sample>(upLeft, downLeft), upRight,
                                               downRight, meanOfLanes<Sample>(upRight, downRight));
    return {bySite<Sample, greenFirst>(horizontal, site, kAll), bySite<Sample, greenFirst>(site, cross, kAll),
            bySite<Sample, greenFirst>(vertical, corners, kAll)};
}

/// Fills planes with whole vectors of pixels.
template <typename Sample, bool greenFirst>
QUILL_WIDE_VECTORS void fillPlanesWidely(const MosaicRow<Sample>& row, int pixels, const ColorRow<Sample>& result) {
    constexpr int kLanes = static_cast<int>(kWideLanes<Sample>);
    const auto [above, here, below, isGreenFirst] = row;
    for (int begin = 0; begin < pixels; begin += kLanes) {
        const auto colors = colorsOfLanes<Sample, greenFirst>(above + begin, here + begin, below + begin);
        storeWide<Sample>(result.own + begin, colors.own);
        storeWide<Sample>(result.green + begin, colors.green);
        storeWide<Sample>(result.other + begin, colors.other);
    }
}

/// Fills whole vectors of interleaved pixels.
/// @param ahead  from the row below to a row that is read soon
template <typename Sample, unsigned channels, bool greenFirst, bool ownFirst>
QUILL_WIDE_VECTORS void assembleWidely(const MosaicRow<Sample>& row, int pixels, std::ptrdiff_t ahead, Sample* result) {
    constexpr int kLanes = static_cast<int>(kWideLanes<Sample>);
    const auto [above, here, below, isGreenFirst] = row;
    const WideOf<Sample> alpha = ~WideOf<Sample>{};
    for (int begin = 0; begin < pixels; begin += kLanes) {
        __builtin_prefetch(below + begin + ahead);
        const auto colors = colorsOfLanes<Sample, greenFirst>(above + begin, here + begin, below + begin);
        Sample* const to = result + static_cast<std::ptrdiff_t>(channels) * begin;
        storeInterleaved<Sample, channels>(ownFirst ? colors.own : colors.other, colors.green,
                                           ownFirst ? colors.other : colors.own, alpha, to);
    }
}

} // namespace Imaging::MosaicRows
