// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "Imaging/BufferPool.h"
#include "Imaging/ByteOrder.h"
#include "Imaging/Color.h"
#include "Imaging/FormatTable.h"
#include "Imaging/Image.h"
#include "Imaging/Mono.h"
#include "Imaging/PixelConversion.h"
#include "Imaging/PlanarColor.h"
#include "Imaging/Raw.h"
#include "Imaging/SampleLoops.h"

namespace Imaging {

namespace {

/// A band of this size stays in the cache.
constexpr std::size_t kExportedBandBytes = 32 * 1024;

constexpr std::size_t kSamplesAtOnce = 3 * 128;

/// Bytes exported at a time: those that a vector grows by, and fills, are still in the first-level cache when they are
/// written. Whole pixels and whole vectors of samples.
constexpr std::size_t kBytesAtOnce = 3 * 352;
constexpr std::size_t kBytesReadAhead = 2048;

std::uint16_t loadWord(const unsigned char* bytes) {
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

std::optional<Layout> layoutOfClass(const Image& image) {
    if (dynamic_cast<const Mono*>(&image) != nullptr) {
        return Layout::Grey;
    }
    if (dynamic_cast<const Raw*>(&image) != nullptr) {
        return Layout::Mosaic;
    }
    if (dynamic_cast<const Color*>(&image) != nullptr) {
        return Layout::Interleaved;
    }
    if (dynamic_cast<const PlanarColor*>(&image) != nullptr) {
        return Layout::Planar;
    }
    return std::nullopt;
}

/// Arranges an image of 16-bit words for export, a band of rows at a time: one sample per pixel for grey, the channels
/// 2, 1, 0 for all other formats, in machine byte order.
class ExportedRows {
public:
    /// Whether this class supports the image; other images are read pixel by pixel.
    static bool reads(const Image& image) {
        const FormatDescription* description = findDescription(image.getFormat());
        const auto limit = static_cast<unsigned>(std::numeric_limits<int>::max());
        return description != nullptr && layoutOfClass(image) == description->layout &&
               image.getNumberOfChannels() == description->channels && image.getBytesPerChannel() == 2 &&
               image.getWidth() != 0 && image.getHeight() != 0 && image.getWidth() <= limit &&
               image.getHeight() <= limit;
    }

    explicit ExportedRows(const Image& image)
        : m_Source(const_cast<unsigned char*>(image.getDataAddress()), static_cast<int>(image.getWidth()),
                   static_cast<int>(image.getHeight()), CV_16U, std::size_t{2} * image.getWidth() * image.getHeight(),
                   describe(image.getFormat())),
          m_SamplesPerRow(std::size_t{image.getWidth()} * (image.getNumberOfChannels() == 1 ? 1 : 3)),
          m_BandRows(static_cast<int>(
              std::clamp<std::size_t>(kExportedBandBytes / (2 * m_SamplesPerRow), 1, image.getHeight()))),
          m_Swap(image.isLittleEndian() != machineIsLittleEndian()), m_Band(2 * samplesOf(m_BandRows)),
          m_Swapped(m_Swap ? bytesPerBand() : 0), m_Scaled(bytesPerBand() / 2) {}

    std::size_t samples() const { return samplesOf(m_Source.height()); }

    std::uint16_t largest() {
        const FormatDescription& format = m_Source.description();
        std::uint16_t largest = 0;
        forEachBand([&](const PixelView& rows, int firstRow) {
            if (format.layout == Layout::Mosaic || format.samplesPerPixel() == 4) {
                // Some samples are not exported.
                arrange(rows, firstRow, m_Band.data());
                largest = std::max(largest, largestSample(m_Band.data(), samplesOf(rows.height())));
                return;
            }
            for (unsigned plane = 0; plane < format.planes; ++plane) {
                largest = std::max(largest, largestSample(planeData(rows, plane), samplesOfPlane(rows)));
            }
        });
        return largest;
    }

    /// Appends the exported samples.
    void appendTo(std::vector<unsigned short>& result) {
        const auto append = [&](const unsigned char* samples, std::size_t count) {
            const auto* words = reinterpret_cast<const unsigned short*>(samples);
            result.insert(result.end(), words, words + count);
        };
        forEachBand([&](const PixelView& rows, int firstRow) {
            const std::size_t samples = samplesOf(rows.height());
            if (liesAsExported()) {
                append(rows.data(), samples);
            } else if (isReversed(rows)) {
                // Few samples at a time, so that the processor still reads ahead while it writes.
                alignas(64) std::array<unsigned char, 2 * kSamplesAtOnce> piece;
                for (std::size_t begin = 0; begin < samples; begin += kSamplesAtOnce) {
                    const std::size_t count = std::min(kSamplesAtOnce, samples - begin);
                    reverseTriples(rows.data() + 2 * begin, count / 3, 2, piece.data());
                    append(piece.data(), count);
                }
            } else {
                arrange(rows, firstRow, m_Band.data());
                append(m_Band.data(), samples);
            }
        });
    }

    /// Appends one byte per exported sample, computed by @p map from samples, their number and the destination.
    template <typename Map>
    void appendTo(std::vector<unsigned char>& result, Map map) {
        forEachBand([&](const PixelView& rows, int firstRow) {
            if (liesAsExported() || isReversed(rows)) {
                appendPieces(rows, result, map);
                return;
            }
            const std::size_t begin = result.size();
            result.resize(begin + samplesOf(rows.height()));
            // Scaling first halves the bytes to arrange.
            const PixelView scaled(m_Scaled.data(), rows.width(), rows.height(), CV_8U, samplesOfPlane(rows),
                                   rows.description());
            for (unsigned plane = 0; plane < rows.description().planes; ++plane) {
                map(planeData(rows, plane), samplesOfPlane(rows), planeData(scaled, plane));
            }
            arrange(scaled, firstRow, result.data() + begin);
        });
    }

private:
    static unsigned char* planeData(const PixelView& rows, unsigned plane) {
        return rows.data() + plane * rows.planeBytes();
    }
    static std::size_t samplesOfPlane(const PixelView& rows) {
        return rows.rowBytes() / rows.bytesPerSample() * static_cast<std::size_t>(rows.height());
    }

    std::size_t samplesOf(int rows) const { return m_SamplesPerRow * static_cast<std::size_t>(rows); }
    /// The bytes of the source in one band.
    std::size_t bytesPerBand() const {
        return m_Source.rowBytes() * m_Source.description().planes * static_cast<std::size_t>(m_BandRows);
    }
    bool liesAsExported() const {
        return m_Source.description().layout == Layout::Grey || &m_Source.description() == &describe(IMAGE_FORMAT::BGR);
    }

    static bool isReversed(const PixelView& rows) { return &rows.description() == &describe(IMAGE_FORMAT::RGB); }

    /// Calls @p use with the rows of each band in machine byte order, and the number of the first row, from the top.
    template <typename Use>
    void forEachBand(Use use) {
        for (int row = 0; row < m_Source.height(); row += m_BandRows) {
            const PixelView rows = m_Source.rows(row, std::min(row + m_BandRows, m_Source.height()));
            use(m_Swap ? swapped(rows) : rows, row);
        }
    }

    template <typename Map>
    void appendPieces(const PixelView& rows, std::vector<unsigned char>& result, Map map) {
        alignas(64) std::array<unsigned char, kBytesAtOnce> scaled;
        const std::size_t samples = samplesOf(rows.height());
        for (std::size_t piece = 0; piece < samples; piece += kBytesAtOnce) {
            const std::size_t count = std::min(kBytesAtOnce, samples - piece);
            const unsigned char* const from = rows.data() + 2 * piece;
            prefetch(from + kBytesReadAhead, 2 * count);
            const std::size_t begin = result.size();
            result.resize(begin + count);
            if (liesAsExported()) {
                map(from, count, result.data() + begin);
            } else {
                map(from, count, scaled.data());
                reverseTriples(scaled.data(), count / 3, 1, result.data() + begin);
            }
        }
    }

    PixelView swapped(const PixelView& rows) {
        const PixelView result(m_Swapped.data(), rows.width(), rows.height(), CV_16U, 2 * samplesOfPlane(rows),
                               rows.description());
        for (unsigned plane = 0; plane < rows.description().planes; ++plane) {
            swapSampleBytes(planeData(rows, plane), planeData(result, plane), samplesOfPlane(rows));
        }
        return result;
    }

    /// Arranges the samples of @p rows in export order.
    static void arrange(const PixelView& rows, int firstRow, unsigned char* target) {
        if (rows.description().layout == Layout::Mosaic) {
            spreadMosaic(rows, firstRow, target);
        } else if (isReversed(rows)) {
            reverseTriples(rows.data(), samplesOfPlane(rows) / 3, rows.bytesPerSample(), target);
        } else {
            convertPixels(rows,
                          PixelView(target, rows.width(), rows.height(), rows.depth(), 0, describe(IMAGE_FORMAT::BGR)));
        }
    }

    /// Stores the sample of each site at the place of its channel; channel 3, blue, is not exported.
    static void spreadMosaic(const PixelView& rows, int firstRow, unsigned char* target) {
        const std::size_t bytes = rows.bytesPerSample();
        const unsigned char* from = rows.data();
        std::memset(target, 0, 3 * bytes * samplesOfPlane(rows));
        for (int row = 0; row < rows.height(); ++row) {
            const std::uint8_t* channels = &rows.description().channelOfSample[(firstRow + row) % 2 * 2];
            for (int column = 0; column < rows.width(); ++column, from += bytes, target += 3 * bytes) {
                if (const std::uint8_t channel = channels[column % 2]; channel < 3) {
                    std::memcpy(target + bytes * (2 - channel), from, bytes);
                }
            }
        }
    }

    PixelView m_Source;
    std::size_t m_SamplesPerRow;
    int m_BandRows;
    bool m_Swap;
    ScratchBuffer m_Band;
    ScratchBuffer m_Swapped;
    ScratchBuffer m_Scaled;
};

/// The exported values of any image, read pixel by pixel.
std::vector<std::uint16_t> exportedValues(const Image& image) {
    std::vector<std::uint16_t> values;
    for (unsigned row = 0; row < image.getHeight(); ++row) {
        for (unsigned column = 0; column < image.getWidth(); ++column) {
            const Pixel pixel = image.getPixel(row, column);
            for (int channel = image.getNumberOfChannels() == 1 ? 0 : 2; channel >= 0; --channel) {
                values.push_back(static_cast<std::uint16_t>(pixel.channel[channel]));
            }
        }
    }
    return values;
}

/// Scales samples so that the largest becomes 255, halves rounded up: floor(255 v / largest + 1/2), in integer
/// arithmetic.
class Scale {
public:
    explicit Scale(unsigned largest) : m_Largest(largest) {
        if (!isDividedByMultiplying(m_Largest)) {
            fillTable();
        }
    }

    void map(const unsigned char* samples, std::size_t count, unsigned char* result) const {
        if (isDividedByMultiplying(m_Largest)) {
            scaleSamples(samples, count, m_Largest, result);
            return;
        }
        for (std::size_t i = 0; i < count; ++i) {
            // Samples that are not exported may exceed the largest.
            result[i] = m_Table[std::min<unsigned>(loadWord(samples + 2 * i), m_Largest)];
        }
    }

private:
    void fillTable() {
        m_Table.reserve(m_Largest + 1);
        unsigned remainder = m_Largest;
        unsigned char level = 0;
        for (unsigned sample = 0; sample <= m_Largest; ++sample) {
            m_Table.push_back(level);
            for (remainder += 2 * 255; m_Largest != 0 && remainder >= 2 * m_Largest; remainder -= 2 * m_Largest) {
                ++level;
            }
        }
    }

    unsigned m_Largest;
    std::vector<unsigned char> m_Table;
};

} // namespace

std::vector<unsigned char> Image::get8bitImageData() const {
    if (getBitDepth() == 8) {
        return getData();
    }
    std::vector<unsigned char> result;
    if (!ExportedRows::reads(*this)) {
        const std::vector<std::uint16_t> values = exportedValues(*this);
        const auto* bytes = reinterpret_cast<const unsigned char*>(values.data());
        result.resize(values.size());
        Scale(largestSample(bytes, values.size())).map(bytes, values.size(), result.data());
        return result;
    }
    ExportedRows rows(*this);
    const Scale scale(rows.largest());
    result.reserve(rows.samples());
    rows.appendTo(result, [&](const unsigned char* samples, std::size_t count, unsigned char* scaled) {
        scale.map(samples, count, scaled);
    });
    return result;
}

std::vector<unsigned short> Image::get16bitImageData() const {
    if (getBitDepth() == 8) {
        return {};
    }
    if (!ExportedRows::reads(*this)) {
        return exportedValues(*this);
    }
    ExportedRows rows(*this);
    std::vector<unsigned short> result;
    result.reserve(rows.samples());
    rows.appendTo(result);
    return result;
}

} // namespace Imaging
