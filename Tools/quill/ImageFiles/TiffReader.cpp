// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/TiffReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "ImageFiles/CfaPattern.h"
#include "ImageFiles/FileSamples.h"
#include "ImageFiles/InputFile.h"
#include "ImageFiles/TiffHandle.h"

namespace QuillTool {

namespace {

/// What libtiff may allocate at once beside a few copies of the file, so that no count in a file exhausts the memory.
constexpr std::uint64_t kSpareBlock = std::uint64_t{1} << 24;

/// How many bytes one byte of a file can hold at most.
struct Compression {
    unsigned code;
    std::uint64_t largestRatio;
};
constexpr std::array<Compression, 5> kCompressions{{
    {COMPRESSION_NONE, 1},
    {COMPRESSION_LZW, 4096},
    {COMPRESSION_PACKBITS, 64},
    {COMPRESSION_ADOBE_DEFLATE, 1032},
    {COMPRESSION_DEFLATE, 1032},
}};

/// The bytes of a file in memory. Notes a read beyond their end: libtiff ignores tags whose values are missing.
class MemoryBytes : public TiffBytes {
public:
    explicit MemoryBytes(const std::vector<unsigned char>& bytes) : m_Bytes(bytes) {}

    std::size_t read(std::uint64_t position, void* bytes, std::size_t size) noexcept override {
        const std::uint64_t left = m_Bytes.size() - std::min<std::uint64_t>(position, m_Bytes.size());
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
        m_Truncated = m_Truncated || length < size;
        if (length != 0) {
            std::memcpy(bytes, &m_Bytes[position], length);
        }
        return length;
    }
    std::size_t write(std::uint64_t /*position*/, const void* /*bytes*/, std::size_t /*size*/) noexcept override {
        return 0;
    }
    std::uint64_t size() const noexcept override { return m_Bytes.size(); }

    void requireWhole() const {
        if (m_Truncated) {
            throw std::runtime_error("the file is truncated");
        }
    }

private:
    const std::vector<unsigned char>& m_Bytes;
    bool m_Truncated = false;
};

/// The layout of a page.
struct Layout {
    Imaging::IMAGE_FORMAT format;
    std::uint32_t width;
    std::uint32_t height;
    unsigned samplesPerPixel;
    unsigned bytesPerSample;
    std::uint32_t rowsPerStrip;
    std::uint64_t largestRatio;
    unsigned maximum;
};

/// Returns the value of a tag, or its default; 0 if it has none.
template <typename Value>
Value valueOf(TIFF* tiff, std::uint32_t tag) {
    Value value = 0;
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : Value{0};
}

unsigned wordOf(TIFF* tiff, std::uint32_t tag) {
    return valueOf<std::uint16_t>(tiff, tag);
}

[[noreturn]] void refuse(std::string_view what, unsigned value) {
    throw std::runtime_error(fmt::format("a TIFF file whose {} is {} is not supported", what, value));
}

/// Returns the layout of a mosaic of 2 x 2 pixels.
Imaging::IMAGE_FORMAT mosaicFormat(TIFF* tiff) {
    const std::uint16_t* sides = nullptr;
    std::uint16_t count = 0;
    const unsigned char* colors = nullptr;
    const bool complete = TIFFGetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, &sides) == 1 && sides[0] == 2 &&
                          sides[1] == 2 && TIFFGetField(tiff, TIFFTAG_CFAPATTERN, &count, &colors) == 1 && count == 4;
    const auto* const row = std::find_if(kCfaPatterns.begin(), kCfaPatterns.end(), [&](const CfaPattern& pattern) {
        return complete && std::equal(pattern.colors.begin(), pattern.colors.end(), colors);
    });
    if (row == kCfaPatterns.end()) {
        throw std::runtime_error("only mosaics of one red, two green and one blue pixel are supported");
    }
    return row->format;
}

Imaging::IMAGE_FORMAT formatOf(TIFF* tiff, unsigned samples) {
    const unsigned photometric = wordOf(tiff, TIFFTAG_PHOTOMETRIC);
    if (photometric == PHOTOMETRIC_CFA && samples == 1) {
        return mosaicFormat(tiff);
    }
    if (photometric != (samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB)) {
        refuse("photometric interpretation", photometric);
    }
    return fileLayout(samples);
}

/// Reads and checks the tags of the first page.
Layout layoutOf(TIFF* tiff) {
    const struct {
        std::uint32_t tag;
        unsigned supported;
        const char* name;
    } kFixed[] = {{TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG, "planar configuration"},
                  {TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT, "orientation"},
                  {TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT, "sample format"}};
    for (const auto& [tag, supported, name] : kFixed) {
        if (wordOf(tiff, tag) != supported) {
            refuse(name, wordOf(tiff, tag));
        }
    }
    if (TIFFIsTiled(tiff) != 0) {
        throw std::runtime_error("a TIFF file of tiles is not supported");
    }
    const unsigned bits = wordOf(tiff, TIFFTAG_BITSPERSAMPLE);
    if (bits != 8 && bits != 16) {
        refuse("number of bits per sample", bits);
    }
    const unsigned code = wordOf(tiff, TIFFTAG_COMPRESSION);
    const auto* const compression = std::find_if(kCompressions.begin(), kCompressions.end(),
                                                 [&](const Compression& row) { return row.code == code; });
    if (compression == kCompressions.end()) {
        refuse("compression", code);
    }
    const unsigned samples = wordOf(tiff, TIFFTAG_SAMPLESPERPIXEL);
    return {formatOf(tiff, samples),
            valueOf<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH),
            valueOf<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH),
            samples,
            bits / 8,
            valueOf<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP),
            compression->largestRatio,
            wordOf(tiff, TIFFTAG_MAXSAMPLEVALUE)};
}

void readStrips(const TiffHandle& handle, const Layout& layout, std::vector<unsigned char>& data) {
    const std::size_t rowBytes = data.size() / layout.height;
    const std::size_t stripBytes = rowBytes * std::clamp<std::uint32_t>(layout.rowsPerStrip, 1, layout.height);
    std::uint32_t strip = 0;
    for (std::size_t begin = 0; begin < data.size(); begin += stripBytes, ++strip) {
        const auto size = static_cast<tmsize_t>(std::min(stripBytes, data.size() - begin));
        handle.require(TIFFReadEncodedStrip(handle.get(), strip, &data[begin], size) == size);
    }
}

/// Returns the depth that the largest value of words claims, unless a sample contradicts.
unsigned depthOf(const Layout& layout, const std::vector<unsigned char>& data, bool littleEndian) {
    if (layout.bytesPerSample == 1) {
        return 8;
    }
    for (const unsigned depth : {10U, 12U}) {
        if (layout.maximum != (1U << depth) - 1) {
            continue;
        }
        for (std::size_t k = littleEndian ? 1 : 0; k < data.size(); k += 2) {
            if (data[k] >> (depth - 8) != 0) {
                return 16;
            }
        }
        return depth;
    }
    return 16;
}

std::unique_ptr<Imaging::Image> readFirstPage(MemoryBytes& source, std::uint64_t fileBytes) {
    const TiffHandle handle(source, "rm", kSpareBlock + 4 * fileBytes);
    const Layout layout = layoutOf(handle.get());
    source.requireWhole();
    const std::size_t size =
        checkedImageBytes(layout.width, layout.height, std::uint64_t{layout.samplesPerPixel} * layout.bytesPerSample);
    if (size / layout.largestRatio > fileBytes) {
        throw std::runtime_error(fmt::format("the header promises {} x {} pixels, more than fit into {} bytes",
                                             layout.width, layout.height, fileBytes));
    }
    std::vector<unsigned char> data(size);
    readStrips(handle, layout, data);
    source.requireWhole();
    // libtiff delivers words in the order of the machine.
    const bool littleEndian = (TIFFIsBigEndian(handle.get()) != 0) == (TIFFIsByteSwapped(handle.get()) != 0);
    const unsigned depth = depthOf(layout, data, littleEndian);
    return Imaging::createImage(layout.width, layout.height, std::move(data), depth, littleEndian, layout.format);
}

} // namespace

std::unique_ptr<Imaging::Image> readTiff(const std::vector<unsigned char>& bytes) {
    MemoryBytes source(bytes);
    try {
        return readFirstPage(source, bytes.size());
    } catch (const std::runtime_error&) {
        source.requireWhole(); // the reason behind that of libtiff
        throw;
    }
}

} // namespace QuillTool
