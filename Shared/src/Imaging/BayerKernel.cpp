// SPDX-License-Identifier: Apache-2.0

#include "Imaging/BayerKernel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "Imaging/ByteOrder.h"
#include "Imaging/MosaicRows.h"
#include "Imaging/MosaicVectors.h"
#include "Imaging/RowBands.h"
#include "Imaging/SampleLoops.h"

namespace Imaging {

using namespace MosaicRows;

namespace {

constexpr int kFewestColumns = 4; // pixels are computed in pairs, except the first and the last
constexpr int kFewestRows = 3;

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
    static constexpr int kLanes = static_cast<int>(kWideLanes<Sample>);

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
                isWide() ? assembleWideRow(row) : assembleRow(row);
                break;
            case Layout::Planar:
                fillPlanes(row);
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

    void fillPlanes(int row) const {
        const MosaicRow<Sample> sites = mosaicRow(row, 1);
        const ColorRow<Sample> colors =
            colorRow(row, {targetRow(0, row) + 1, targetRow(1, row) + 1, targetRow(2, row) + 1});
        if (isWide()) {
            forWholeVectors(m_Target.width() - 2, kLanes, [&](int begin, int count) {
                const MosaicRow<Sample> from = sites.from(begin);
                (from.greenFirst ? fillPlanesWidely<Sample, true>
                                 : fillPlanesWidely<Sample, false>)(from, count, colors.from(begin));
            });
        } else {
            fillPixels(sites, m_Target.width() - 2, colors);
        }
    }

    // The pixels computed are those that have neighbours on both sides.
    void fillGrey(int row) const {
        const bool red = isRedRow(row);
        const GreyRow<Sample> grey{targetRow(0, row) + 1, red ? kRedWeight : kBlueWeight,
                                   red ? kBlueWeight : kRedWeight};
        if constexpr (sizeof(Sample) == 1) {
            fillBytes(mosaicRow(row, 1), m_Target.width() - 2, grey);
        } else {
            fillPixels(mosaicRow(row, 1), m_Target.width() - 2, grey, m_Vectors == Vectors::Wide);
        }
    }

    /// Whether the pixels with neighbours on both sides fill a wide vector.
    bool isWide() const { return m_Vectors == Vectors::Wide && m_Target.width() - 2 >= kLanes; }

    /// Assembles a row of interleaved pixels in wide vectors.
    void assembleWideRow(int row) const {
        using Assemble = decltype(&assembleWidely<Sample, 3, false, false>);
        static constexpr Assemble kFunctions[2][2][2] = {
            {{assembleWidely<Sample, 3, false, false>, assembleWidely<Sample, 3, false, true>},
             {assembleWidely<Sample, 3, true, false>, assembleWidely<Sample, 3, true, true>}},
            {{assembleWidely<Sample, 4, false, false>, assembleWidely<Sample, 4, false, true>},
             {assembleWidely<Sample, 4, true, false>, assembleWidely<Sample, 4, true, true>}}};
        const auto channels = static_cast<std::size_t>(m_Target.description().channels);
        const auto width = static_cast<std::size_t>(m_Target.width());
        const MosaicRow<Sample> sites = mosaicRow(row, 1);
        const bool redFirst = m_Target.description().channelOfSample[0] == 0;
        const auto& functions = kFunctions[channels == 4];
        Sample* const pixels = targetRow(0, row);
        forWholeVectors(m_Target.width() - 2, kLanes, [&](int begin, int count) {
            const MosaicRow<Sample> from = sites.from(begin);
            functions[from.greenFirst][isRedRow(row) == redFirst](
                from, count, m_Source.width(), pixels + channels * (static_cast<std::size_t>(begin) + 1));
        });
        std::memcpy(pixels, pixels + channels, sizeof(Sample) * channels);
        Sample* const last = pixels + (width - 1) * channels;
        std::memcpy(last, last - channels, sizeof(Sample) * channels);
    }

    /// Assembles a row of interleaved pixels piece by piece in the cache.
    void assembleRow(int row) const {
        constexpr int kSpace = 64; // on both sides, for an overlapping pair
        alignas(64) Sample samples[4][kSpace + kPieceColumns + kSpace];
        const auto channels = m_Target.description().channels;
        if (channels == 4) {
            std::fill(std::begin(samples[3]), std::end(samples[3]), std::numeric_limits<Sample>::max());
        }
        const int width = m_Target.width();
        int end = 0;
        for (int begin = 0; begin < width; begin = end) {
            end = std::min(width, begin + kPieceColumns);
            end -= end == width - 1 ? 1 : 0; // the last pixel needs the one before
            const int first = begin == 0 ? 1 : 0;
            const int last = end - begin - (end == width ? 1 : 0);
            // So that the first pixel computed is aligned.
            const auto start = [&](int plane) { return samples[plane] + kSpace - first; };
            const std::array<Sample*, 3> planes{start(0), start(1), start(2)};
            const ColorRow<Sample> colors = colorRow(row, planes);
            const MosaicRow<Sample> sites = mosaicRow(row, begin + first);
            prefetch(sites.below + m_Source.width(), sizeof(Sample) * static_cast<std::size_t>(last - first));
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
        return vectors == Vectors::Wide;
    case Layout::Interleaved:
        return source.depth() == CV_16U || vectors == Vectors::Wide;
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
