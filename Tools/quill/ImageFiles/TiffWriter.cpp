// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/TiffWriter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

#include "ImageFiles/CfaPattern.h"
#include "ImageFiles/FileSamples.h"

namespace QuillTool {

namespace {

/// Pixels beyond this may, with the tags of many pages, need the 64-bit offsets of a BigTIFF.
constexpr std::uint64_t kMostClassicBytes = std::uint64_t{15} << 28;
/// Readers load a strip at once.
constexpr std::size_t kStripBytes = std::size_t{1} << 20;

constexpr std::array<unsigned char, 4> kDngVersion{1, 4, 0, 0};
constexpr std::array<unsigned char, 4> kOldestDngReader{1, 1, 0, 0};
constexpr std::array<std::uint16_t, 2> kRepeatedPattern{2, 2};
/// CIE XYZ to linear sRGB, row by row (IEC 61966-2-1).
constexpr std::array<float, 9> kXyzToLinearSrgb{3.2406F, -1.5372F, -0.4986F, -0.9689F, 1.8758F,
                                                0.0415F, 0.0557F,  -0.2040F, 1.0570F};
constexpr std::array<float, 3> kNeutral{1, 1, 1};
constexpr int kDaylight65 = 21;
constexpr float kBlack = 0;

/// The time in the form of the tag DateTime: local, in seconds.
std::string dateTime() {
    const std::tm now = localTime(std::time(nullptr));
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y:%m:%d %H:%M:%S", &now)};
}

unsigned rowsPerStrip(const Imaging::Image& image) {
    const std::size_t rowBytes = std::size_t{image.getWidth()} * image.getBytesPerPixel();
    return static_cast<unsigned>(std::clamp<std::size_t>(kStripBytes / rowBytes, 1, image.getHeight()));
}

} // namespace

std::size_t TiffWriter::Bytes::read(std::uint64_t position, void* bytes, std::size_t size) noexcept {
    return m_File.readAt(position, bytes, size);
}

std::size_t TiffWriter::Bytes::write(std::uint64_t position, const void* bytes, std::size_t size) noexcept {
    return m_File.writeAt(position, bytes, size);
}

TiffWriter::TiffWriter(AtomicFile& file, std::uint64_t expectedBytes) : m_File(file), m_Bytes(file) {
    withReason([&] { m_Handle.emplace(m_Bytes, expectedBytes > kMostClassicBytes ? "wb8" : "wb"); });
}

void TiffWriter::add(const Imaging::Image& image, const ImageOrigin& origin) {
    withReason([&] {
        setLayout(image, samplesPerPixel(image) == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
        setOrigin(origin);
        writePixels(image);
    });
}

void TiffWriter::addNegative(const Imaging::Image& mosaic, const ImageOrigin& origin) {
    withReason([&] {
        setLayout(mosaic, PHOTOMETRIC_CFA);
        setOrigin(origin);
        setColors(mosaic, origin);
        writePixels(mosaic);
    });
}

/// Prefers the reason of the operating system to that of libtiff.
template <typename Action>
void TiffWriter::withReason(Action action) {
    try {
        action();
    } catch (const std::runtime_error&) {
        m_File.requireNoFailure();
        throw;
    }
}

template <typename... Values>
void TiffWriter::set(std::uint32_t tag, Values... values) {
    m_Handle->require(TIFFSetField(m_Handle->get(), tag, values...) == 1);
}

void TiffWriter::setLayout(const Imaging::Image& image, unsigned photometric) {
    const unsigned samples = samplesPerPixel(image);
    set(TIFFTAG_SUBFILETYPE, 0);
    set(TIFFTAG_IMAGEWIDTH, image.getWidth());
    set(TIFFTAG_IMAGELENGTH, image.getHeight());
    set(TIFFTAG_SAMPLESPERPIXEL, samples);
    set(TIFFTAG_BITSPERSAMPLE, 8 * image.getBytesPerChannel());
    set(TIFFTAG_PHOTOMETRIC, photometric);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    set(TIFFTAG_ROWSPERSTRIP, rowsPerStrip(image));
    if (samples == 4) {
        const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
        set(TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
    if (image.getBitDepth() % 8 != 0) {
        set(TIFFTAG_MAXSAMPLEVALUE, FileSamples::largestValue(image));
    }
}

void TiffWriter::setOrigin(const ImageOrigin& origin) {
    set(TIFFTAG_SOFTWARE, "Quill " QUILL_TOOL_VERSION);
    set(TIFFTAG_DATETIME, dateTime().c_str());
    if (!origin.model.empty()) {
        set(TIFFTAG_MODEL, origin.model.c_str());
    }
    if (!origin.serialNumber.empty()) {
        set(TIFFTAG_CAMERASERIALNUMBER, origin.serialNumber.c_str());
    }
}

void TiffWriter::setColors(const Imaging::Image& mosaic, const ImageOrigin& origin) {
    const auto* const pattern = std::find_if(kCfaPatterns.begin(), kCfaPatterns.end(),
                                             [&](const CfaPattern& row) { return row.format == mosaic.getFormat(); });
    const std::uint32_t white = FileSamples::largestValue(mosaic);
    set(TIFFTAG_DNGVERSION, kDngVersion.data());
    set(TIFFTAG_DNGBACKWARDVERSION, kOldestDngReader.data());
    set(TIFFTAG_UNIQUECAMERAMODEL, origin.model.empty() ? "Unknown camera" : origin.model.c_str());
    set(TIFFTAG_CFAREPEATPATTERNDIM, kRepeatedPattern.data());
    set(TIFFTAG_CFAPATTERN, static_cast<int>(pattern->colors.size()), pattern->colors.data());
    set(TIFFTAG_BLACKLEVEL, 1, &kBlack);
    set(TIFFTAG_WHITELEVEL, 1, &white);
    set(TIFFTAG_COLORMATRIX1, static_cast<int>(kXyzToLinearSrgb.size()), kXyzToLinearSrgb.data());
    set(TIFFTAG_CALIBRATIONILLUMINANT1, kDaylight65);
    set(TIFFTAG_ASSHOTNEUTRAL, static_cast<int>(kNeutral.size()), kNeutral.data());
}

void TiffWriter::writePixels(const Imaging::Image& image) {
    FileSamples samples(image, FileSamples::largestValue(image));
    const unsigned rows = rowsPerStrip(image);
    std::vector<unsigned char> strip;
    for (unsigned first = 0; first < image.getHeight(); first += rows) {
        strip.clear();
        for (unsigned row = first; row < std::min(first + rows, image.getHeight()); ++row) {
            const unsigned char* const bytes = samples.row(row);
            strip.insert(strip.end(), bytes, bytes + samples.rowBytes());
        }
        const auto size = static_cast<tmsize_t>(strip.size());
        m_Handle->require(TIFFWriteRawStrip(m_Handle->get(), first / rows, strip.data(), size) == size);
    }
    m_Handle->require(TIFFWriteDirectory(m_Handle->get()) == 1);
}

void writeTiff(const Imaging::Image& image, AtomicFile& file, const ImageOrigin& origin) {
    TiffWriter(file, image.getImageSize()).add(image, origin);
}

void writeDng(const Imaging::Image& mosaic, AtomicFile& file, const ImageOrigin& origin) {
    TiffWriter(file, mosaic.getImageSize()).addNegative(mosaic, origin);
}

} // namespace QuillTool
