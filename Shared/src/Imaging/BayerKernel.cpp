// SPDX-License-Identifier: Apache-2.0

#include "Imaging/BayerKernel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Imaging/ByteOrder.h"
#include "Imaging/RowBands.h"
#include "Imaging/SampleLoops.h"

namespace Imaging {

namespace {

constexpr int kFewestColumns = 4; // pixels are computed in pairs, except the first and the last
constexpr int kFewestRows = 3;

/// Columns assembled together in the first-level cache: few, so that the processor still reads ahead while it writes.
constexpr int kPieceColumns = 1024;

/// Weights of OpenCV's grey, with the sum 2^14.
constexpr std::uint32_t kRedWeight = 4899;
constexpr std::uint32_t kGreenWeight = 9617;
constexpr std::uint32_t kBlueWeight = 1868;

/// Two neighbouring pixels as one number of double width: this halves the operations and leaves room for sums.
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

struct GreyRow {
    std::uint16_t* grey;
    std::uint32_t ownWeight;
    std::uint32_t otherWeight;

    GreyRow from(int column) const { return {grey + column, ownWeight, otherWeight}; }
};

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
template <typename Sample, bool GreenFirst>
[[gnu::always_inline]] inline void fillColors(const Sample* __restrict above, const Sample* __restrict here,
                                              const Sample* __restrict below, int pairs, Sample* __restrict own,
                                              Sample* __restrict green, Sample* __restrict other) {
    using S = Sites<Sample, GreenFirst>;
    for (int i = 0; i < 2 * pairs; i += 2) {
        const S sites = S::read(above + i, here + i, below + i);
        S::store(own + i, sites.colored, (sites.horizontal + 1U) >> 1);
        S::store(green + i, (sites.cross + 2U) >> 2, sites.green);
        S::store(other + i, (sites.corners + 2U) >> 2, (sites.vertical + 1U) >> 1);
    }
}

template <bool GreenFirst>
[[gnu::always_inline]] inline void
fillGreys(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
          const std::uint16_t* __restrict below, int pairs, std::uint16_t* __restrict grey, std::uint32_t ownWeight,
          std::uint32_t otherWeight) {
    using S = Sites<std::uint16_t, GreenFirst>;
    for (int i = 0; i < 2 * pairs; i += 2) {
        const S sites = S::read(above + i, here + i, below + i);
        const std::uint32_t colored =
            sites.colored * (4 * ownWeight) + sites.cross * kGreenWeight + sites.corners * otherWeight;
        const std::uint32_t green =
            sites.green * (2 * kGreenWeight) + sites.horizontal * ownWeight + sites.vertical * otherWeight;
        S::store(grey + i, (colored + (1U << 15)) >> 16, (green + (1U << 14)) >> 15);
    }
}

template <typename Sample, bool GreenFirst>
void colorsPortably(const Sample* __restrict above, const Sample* __restrict here, const Sample* __restrict below,
                    int pairs, Sample* __restrict own, Sample* __restrict green, Sample* __restrict other) {
    fillColors<Sample, GreenFirst>(above, here, below, pairs, own, green, other);
}

template <typename Sample, bool GreenFirst>
QUILL_WIDE_VECTORS void colorsWidely(const Sample* __restrict above, const Sample* __restrict here,
                                     const Sample* __restrict below, int pairs, Sample* __restrict own,
                                     Sample* __restrict green, Sample* __restrict other) {
    fillColors<Sample, GreenFirst>(above, here, below, pairs, own, green, other);
}

template <bool GreenFirst>
void greysPortably(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
                   const std::uint16_t* __restrict below, int pairs, std::uint16_t* __restrict grey,
                   std::uint32_t ownWeight, std::uint32_t otherWeight) {
    fillGreys<GreenFirst>(above, here, below, pairs, grey, ownWeight, otherWeight);
}

template <bool GreenFirst>
QUILL_WIDE_VECTORS void greysWidely(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
                                    const std::uint16_t* __restrict below, int pairs, std::uint16_t* __restrict grey,
                                    std::uint32_t ownWeight, std::uint32_t otherWeight) {
    fillGreys<GreenFirst>(above, here, below, pairs, grey, ownWeight, otherWeight);
}

template <typename Sample>
void fillPairs(const MosaicRow<Sample>& row, int pairs, const ColorRow<Sample>& result, bool wide) {
    static constexpr decltype(&colorsPortably<Sample, false>) kFunctions[2][2] = {
        {colorsPortably<Sample, false>, colorsPortably<Sample, true>},
        {colorsWidely<Sample, false>, colorsWidely<Sample, true>}};
    kFunctions[wide][row.greenFirst](row.above, row.here, row.below, pairs, result.own, result.green, result.other);
}

void fillPairs(const MosaicRow<std::uint16_t>& row, int pairs, const GreyRow& result, bool wide) {
    static constexpr decltype(&greysPortably<false>) kFunctions[2][2] = {{greysPortably<false>, greysPortably<true>},
                                                                         {greysWidely<false>, greysWidely<true>}};
    kFunctions[wide][row.greenFirst](row.above, row.here, row.below, pairs, result.grey, result.ownWeight,
                                     result.otherWeight);
}

/// Demosaics the rows of one image.
template <typename Sample>
class Demosaicing {
public:
    Demosaicing(const PixelView& source, const PixelView& target, Vectors vectors)
        : m_Source(source), m_Target(target), m_Vectors(vectors) {}

    void run() const {
        const cv::Range inner(1, m_Source.height() - 1);
        forRowBands(inner, m_Source.bytes() + m_Target.bytes(), [this](const cv::Range& rows) { fillRows(rows); });
        for (unsigned plane = 0; plane < planes(); ++plane) {
            std::memcpy(targetRow(plane, 0), targetRow(plane, 1), m_Target.rowBytes());
            std::memcpy(targetRow(plane, inner.end), targetRow(plane, inner.end - 1), m_Target.rowBytes());
        }
    }

private:
    /// The planes that are demosaiced.
    unsigned planes() const { return std::min(m_Target.description().planes, 3U); }

    Sample* targetRow(unsigned plane, int row) const {
        return reinterpret_cast<Sample*>(m_Target.data() + plane * m_Target.planeBytes() +
                                         static_cast<std::size_t>(row) * m_Target.rowBytes());
    }

    std::uint8_t siteChannel(int row, int column) const {
        return m_Source.description().channelOfSample[static_cast<std::size_t>(row % 2 * 2 + column % 2)];
    }
    bool isGreen(int row, int column) const {
        const std::uint8_t channel = siteChannel(row, column);
        return channel == 1 || channel == 2;
    }
    bool isRedRow(int row) const { return siteChannel(row, 0) == 0 || siteChannel(row, 1) == 0; }

    MosaicRow<Sample> mosaicRow(int row, int column) const {
        const auto* here = reinterpret_cast<const Sample*>(m_Source.data()) +
                           static_cast<std::ptrdiff_t>(row) * m_Source.width() + column;
        return {here - m_Source.width(), here, here + m_Source.width(), isGreen(row, column)};
    }

    /// The destinations of the row's own colour, of green and of the other colour among those of red, green and blue.
    ColorRow<Sample> colorRow(int row, const std::array<Sample*, 3>& inOrderOfTarget) const {
        const unsigned red = m_Target.description().channelOfSample[0] == 0 ? 0 : 2;
        const unsigned own = isRedRow(row) ? red : 2 - red;
        return {inOrderOfTarget[own], inOrderOfTarget[1], inOrderOfTarget[2 - own]};
    }

    void fillRows(const cv::Range& rows) const {
        for (int row = rows.start; row < rows.end; ++row) {
            switch (m_Target.description().layout) {
            case Layout::Interleaved:
                assembleRow(row);
                break;
            case Layout::Planar:
                fillWhole(row, colorRow(row, {targetRow(0, row), targetRow(1, row), targetRow(2, row)}));
                break;
            default:
                fillGrey(row);
            }
            if (m_Target.description().layout != Layout::Interleaved) {
                for (unsigned plane = 0; plane < planes(); ++plane) {
                    Sample* samples = targetRow(plane, row);
                    samples[0] = samples[1];
                    samples[m_Target.width() - 1] = samples[m_Target.width() - 2];
                }
            }
        }
    }

    void fillGrey(int row) const {
        if constexpr (sizeof(Sample) == 2) {
            const bool red = isRedRow(row);
            fillWhole(row, GreyRow{targetRow(0, row), red ? kRedWeight : kBlueWeight, red ? kBlueWeight : kRedWeight});
        }
    }

    template <typename Result>
    void fillWhole(int row, const Result& result) const {
        fillPixels(mosaicRow(row, 1), m_Target.width() - 2, result.from(1));
    }

    /// Computes the pixels that have neighbours on both sides.
    template <typename Result>
    void fillPixels(const MosaicRow<Sample>& row, int pixels, const Result& result) const {
        fillPairs(row, pixels / 2, result, m_Vectors == Vectors::Wide);
        if (pixels % 2 != 0) { // the last pair overlaps
            fillPairs(row.from(pixels - 2), 1, result.from(pixels - 2), m_Vectors == Vectors::Wide);
        }
    }

    /// Prefetches the samples read next, which the processor alone would do too late.
    static void prefetch(const Sample* samples, int count) {
        constexpr int kSamplesPerLine = 64 / static_cast<int>(sizeof(Sample));
        for (int i = 0; i < count; i += kSamplesPerLine) {
            __builtin_prefetch(samples + i);
        }
    }

    /// Assembles a row of interleaved pixels piece by piece in the cache.
    void assembleRow(int row) const {
        constexpr int kSpace = 64; // on both sides, for an overlapping pair
        alignas(64) Sample samples[4][kSpace + kPieceColumns + kSpace];
        const auto channels = m_Target.description().channels;
        if (channels == 4) {
            std::fill(std::begin(samples[3]), std::end(samples[3]), std::numeric_limits<Sample>::max());
        }
        const std::array<Sample*, 3> planes{samples[0] + kSpace, samples[1] + kSpace, samples[2] + kSpace};
        const ColorRow<Sample> colors = colorRow(row, planes);
        const int width = m_Target.width();
        int end = 0;
        for (int begin = 0; begin < width; begin = end) {
            end = std::min(width, begin + kPieceColumns);
            end -= end == width - 1 ? 1 : 0; // the last pixel needs the one before
            const int first = begin == 0 ? 1 : 0;
            const int last = end - begin - (end == width ? 1 : 0);
            const MosaicRow<Sample> sites = mosaicRow(row, begin + first);
            prefetch(sites.below + m_Source.width(), last - first);
            fillPixels(sites, last - first, colors.from(first));
            for (Sample* plane : planes) {
                if (begin == 0) {
                    plane[0] = plane[1];
                }
                if (end == width) {
                    plane[last] = plane[last - 1];
                }
            }
            const auto bytes = [](const Sample* plane) { return reinterpret_cast<const unsigned char*>(plane); };
            Sample* const target = targetRow(0, row) + static_cast<std::size_t>(begin) * channels;
            interleave({bytes(planes[0]), bytes(planes[1]), bytes(planes[2]), bytes(samples[3])}, channels,
                       static_cast<std::size_t>(end - begin), sizeof(Sample), reinterpret_cast<unsigned char*>(target),
                       m_Vectors);
        }
    }

    PixelView m_Source;
    PixelView m_Target;
    Vectors m_Vectors;
};

} // namespace

bool demosaicsFaster(const PixelView& source, const FormatDescription& target, Vectors vectors) {
    if (!machineIsLittleEndian() || source.width() < kFewestColumns || source.height() < kFewestRows) {
        return false;
    }
    switch (target.layout) {
    case Layout::Grey:
        return source.depth() == CV_16U && vectors == Vectors::Wide;
    case Layout::Interleaved:
        return source.depth() == CV_16U || (target.channels == 3 && vectors == Vectors::Wide);
    default:
        return true;
    }
}

void demosaic(const PixelView& source, const PixelView& target, Vectors vectors) {
    if (source.depth() == CV_8U) {
        Demosaicing<std::uint8_t>(source, target, vectors).run();
    } else {
        Demosaicing<std::uint16_t>(source, target, vectors).run();
    }
}

} // namespace Imaging
