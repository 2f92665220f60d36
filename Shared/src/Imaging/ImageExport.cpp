#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "Imaging/ByteOrder.h"
#include "Imaging/Color.h"
#include "Imaging/FormatTable.h"
#include "Imaging/Image.h"
#include "Imaging/Mono.h"
#include "Imaging/PixelConversion.h"
#include "Imaging/PlanarColor.h"
#include "Imaging/Raw.h"

namespace Imaging {

namespace {

/// What is worked on together stays in the first-level cache.
constexpr std::size_t kBandBytes = 24 * 1024;

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

/// An image of 16-bit words as it is exported: one sample per pixel for grey, the channels 2, 1, 0 for everything else,
/// in machine byte order, a band of rows at a time.
class ExportedRows {
public:
    /// Whether the image is one that this class reads; the others are read pixel by pixel.
    static bool reads(const Image& image) {
        const FormatDescription* description = findDescription(image.getFormat());
        const auto limit = static_cast<unsigned>(std::numeric_limits<int>::max());
        return description != nullptr && layoutOfClass(image) == description->layout &&
               image.getNumberOfChannels() == description->channels && image.getBytesPerChannel() == 2 &&
               image.getWidth() != 0 && image.getWidth() <= limit && image.getHeight() <= limit;
    }

    explicit ExportedRows(const Image& image)
        : m_Swap(image.isLittleEndian() != machineIsLittleEndian()),
          m_Source(const_cast<unsigned char*>(image.getDataAddress()), static_cast<int>(image.getWidth()),
                   static_cast<int>(image.getHeight()), CV_16U, std::size_t{2} * image.getWidth() * image.getHeight(),
                   describe(image.getFormat())),
          m_SamplesPerRow(std::size_t{image.getWidth()} * (image.getNumberOfChannels() == 1 ? 1 : 3)),
          m_BandRows(static_cast<int>(std::max<std::size_t>(kBandBytes / (2 * m_SamplesPerRow), 1))) {}

    std::size_t samples() const { return m_SamplesPerRow * static_cast<std::size_t>(m_Source.height()); }

    /// Calls @p use with the bytes and the number of the samples of each band, from the top.
    template <typename Use>
    void forEachBand(Use use) {
        for (int row = 0; row < m_Source.height(); row += m_BandRows) {
            const int rows = std::min(m_BandRows, m_Source.height() - row);
            use(band(m_Source.rows(row, row + rows), row), m_SamplesPerRow * static_cast<std::size_t>(rows));
        }
    }

private:
    const unsigned char* band(const PixelView& rows, int firstRow) {
        const FormatDescription& bgr = describe(IMAGE_FORMAT::BGR);
        const Layout layout = rows.description().layout;
        const bool asItLies = layout == Layout::Grey || &rows.description() == &bgr;
        const std::size_t samples = m_SamplesPerRow * static_cast<std::size_t>(rows.height());
        if (asItLies && !m_Swap) {
            return rows.data();
        }
        m_Band.resize(2 * samples);
        if (asItLies) {
            swapSampleBytes(rows.data(), m_Band.data(), samples);
            return m_Band.data();
        }
        if (layout == Layout::Mosaic) {
            spreadMosaic(rows, firstRow);
        } else {
            convertPixels(rows, PixelView(m_Band.data(), rows.width(), rows.height(), CV_16U, 0, bgr));
        }
        if (m_Swap) {
            swapSampleBytes(m_Band.data(), m_Band.data(), samples);
        }
        return m_Band.data();
    }

    /// Puts each site's sample where its channel is exported; channel 3, blue, is not.
    void spreadMosaic(const PixelView& rows, int firstRow) {
        std::fill(m_Band.begin(), m_Band.end(), static_cast<unsigned char>(0));
        const unsigned char* from = rows.data();
        unsigned char* to = m_Band.data();
        for (int row = 0; row < rows.height(); ++row) {
            const std::uint8_t* channels = &rows.description().channelOfSample[(firstRow + row) % 2 * 2];
            for (int column = 0; column < rows.width(); ++column, from += 2, to += 6) {
                if (const std::uint8_t channel = channels[column % 2]; channel < 3) {
                    std::memcpy(to + 2 * (2 - channel), from, 2);
                }
            }
        }
    }

    bool m_Swap;
    PixelView m_Source;
    std::size_t m_SamplesPerRow;
    int m_BandRows;
    std::vector<unsigned char> m_Band;
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

std::uint16_t largestSample(const unsigned char* samples, std::size_t count) {
    std::uint16_t largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        largest = std::max(largest, loadWord(samples + 2 * i));
    }
    return largest;
}

/// Scales samples to 0...255, the largest becoming 255 and halves going up: floor(255 v / largest + 1/2), in whole
/// numbers.
class Scale {
public:
    explicit Scale(unsigned largest) : m_Table(largest + 1) {
        unsigned remainder = largest;
        unsigned char level = 0;
        for (unsigned char& entry : m_Table) {
            entry = level;
            for (remainder += 2 * 255; largest != 0 && remainder >= 2 * largest; remainder -= 2 * largest) {
                ++level;
            }
        }
    }

    void map(const unsigned char* samples, std::size_t count, unsigned char* result) const {
        for (std::size_t i = 0; i < count; ++i) {
            result[i] = m_Table[loadWord(samples + 2 * i)];
        }
    }

private:
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
    std::uint16_t largest = 0;
    rows.forEachBand([&](const unsigned char* samples, std::size_t count) {
        largest = std::max(largest, largestSample(samples, count));
    });
    const Scale scale(largest);
    std::vector<unsigned char> scaled;
    result.reserve(rows.samples());
    rows.forEachBand([&](const unsigned char* samples, std::size_t count) {
        scaled.resize(count);
        scale.map(samples, count, scaled.data());
        result.insert(result.end(), scaled.begin(), scaled.end());
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
    rows.forEachBand([&](const unsigned char* samples, std::size_t count) {
        const auto* words = reinterpret_cast<const unsigned short*>(samples);
        result.insert(result.end(), words, words + count);
    });
    return result;
}

} // namespace Imaging
