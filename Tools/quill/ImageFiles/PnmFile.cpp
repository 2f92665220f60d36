// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/PnmFile.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "ImageFiles/FileSamples.h"
#include "ImageFiles/InputFile.h"
#include "ImageFiles/PnmWordReader.h"

namespace QuillTool {

namespace {

constexpr unsigned kLargestMaximum = 65535;
constexpr unsigned kByteMaximum = 255;

/// Kinds of PNM with a header of width, height and largest value.
struct PlainKind {
    std::string_view magic;
    unsigned samplesPerPixel;
    bool text;
};
constexpr PlainKind kPlainKinds[] = {{"P2", 1, true}, {"P3", 3, true}, {"P5", 1, false}, {"P6", 3, false}};
constexpr std::string_view kPamMagic = "P7";

/// The tuple types of a PAM.
struct TupleType {
    std::string_view name;
    unsigned samplesPerPixel;
};
constexpr TupleType kTupleTypes[] = {{"GRAYSCALE", 1}, {"RGB", 3}, {"RGB_ALPHA", 4}, {"BLACKANDWHITE", 1}};

struct Header {
    unsigned width = 0;
    unsigned height = 0;
    unsigned samplesPerPixel = 0;
    unsigned maximum = 0;
    bool text = false;
};

/// Numbers of a PAM header.
struct PamField {
    std::string_view name;
    unsigned Header::*value;
};
constexpr PamField kPamFields[] = {{"WIDTH", &Header::width},
                                   {"HEIGHT", &Header::height},
                                   {"DEPTH", &Header::samplesPerPixel},
                                   {"MAXVAL", &Header::maximum}};

Header readPlainHeader(PnmWordReader& reader, const PlainKind& kind) {
    Header header;
    header.width = reader.number("its width");
    header.height = reader.number("its height");
    header.maximum = reader.number("its largest value");
    header.samplesPerPixel = kind.samplesPerPixel;
    header.text = kind.text;
    return header;
}

Header readPamHeader(PnmWordReader& reader) {
    Header header;
    const TupleType* type = nullptr;
    for (std::string_view name = reader.word(); name != "ENDHDR"; name = reader.word()) {
        const auto hasName = [&](const auto& row) { return row.name == name; };
        const auto* const field = std::find_if(std::begin(kPamFields), std::end(kPamFields), hasName);
        if (field != std::end(kPamFields)) {
            header.*field->value = reader.number(name);
        } else if (name == "TUPLTYPE") {
            name = reader.word();
            type = std::find_if(std::begin(kTupleTypes), std::end(kTupleTypes), hasName);
        } else {
            throw std::runtime_error("the file has an unknown line, or its end, in its header");
        }
    }
    if (type == std::end(kTupleTypes) || (type != nullptr && type->samplesPerPixel != header.samplesPerPixel)) {
        throw std::runtime_error("only the tuple types GRAYSCALE, RGB and RGB_ALPHA are read");
    }
    return header;
}

Header readHeader(PnmWordReader& reader) {
    const std::string_view magic = reader.word();
    const auto* const kind = std::find_if(std::begin(kPlainKinds), std::end(kPlainKinds),
                                          [&](const PlainKind& row) { return row.magic == magic; });
    if (kind == std::end(kPlainKinds) && magic != kPamMagic) {
        throw std::runtime_error("it is not a PGM, PPM or PAM file");
    }
    const Header header = kind == std::end(kPlainKinds) ? readPamHeader(reader) : readPlainHeader(reader, *kind);
    if (header.maximum == 0 || header.maximum > kLargestMaximum) {
        throw std::runtime_error(
            fmt::format("the largest value {} is not within 1 to {}", header.maximum, kLargestMaximum));
    }
    reader.endHeader();
    return header;
}

/// Refuses a header that promises more data than the file holds, before any allocation.
void requireSamples(const Header& header, std::size_t imageBytes, std::size_t fileBytes) {
    const std::size_t bytesPerSample = header.maximum > kByteMaximum ? 2 : 1;
    // In text, a blank follows each number but the last.
    const std::size_t needed = header.text ? imageBytes / bytesPerSample * 2 - 1 : imageBytes;
    if (fileBytes < needed) {
        throw std::runtime_error(
            fmt::format("the header promises {} x {} pixels, but only {} of at least {} bytes follow", header.width,
                        header.height, fileBytes, needed));
    }
}

/// Stores the samples from @p next as bytes or little-endian words.
template <typename Next>
void storeSamples(const Header& header, std::vector<unsigned char>& data, Next next) {
    const bool words = header.maximum > kByteMaximum;
    const std::size_t step = words ? 2 : 1;
    for (std::size_t k = 0; k < data.size(); k += step) {
        const unsigned value = next();
        if (value > header.maximum) {
            throw std::runtime_error(
                fmt::format("a sample of {} is beyond the largest value {}", value, header.maximum));
        }
        const unsigned stored = words ? value : (value * kByteMaximum + header.maximum / 2) / header.maximum;
        data[k] = static_cast<unsigned char>(stored);
        if (words) {
            data[k + 1] = static_cast<unsigned char>(stored >> 8);
        }
    }
}

void writeRows(const Imaging::Image& image, AtomicFile& file, const std::string& header) {
    FileSamples samples(image, FileSamples::largestValue(image));
    file.write(header.data(), header.size());
    for (unsigned row = 0; row < image.getHeight(); ++row) {
        file.write(samples.row(row), samples.rowBytes());
    }
}

} // namespace

std::unique_ptr<Imaging::Image> readPnm(const std::vector<unsigned char>& bytes) {
    PnmWordReader reader({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    const Header header = readHeader(reader);
    const bool words = header.maximum > kByteMaximum;
    const Imaging::IMAGE_FORMAT format = fileLayout(header.samplesPerPixel);
    const std::size_t size =
        checkedImageBytes(header.width, header.height, std::size_t{header.samplesPerPixel} * (words ? 2 : 1));
    requireSamples(header, size, reader.rest().size());

    const auto* const source = reinterpret_cast<const unsigned char*>(reader.rest().data());
    std::vector<unsigned char> data(size);
    if (header.text) {
        storeSamples(header, data, [&] { return reader.number("a sample"); });
    } else if (header.maximum == kByteMaximum) {
        std::copy_n(source, size, data.begin());
    } else if (words) {
        storeSamples(header, data, [next = source]() mutable {
            next += 2;
            return next[-2] * 256U + next[-1];
        });
    } else {
        storeSamples(header, data, [next = source]() mutable { return unsigned{*next++}; });
    }
    const unsigned bitDepth = *std::find_if(kBitDepths.begin(), kBitDepths.end(),
                                            [&](unsigned depth) { return header.maximum >> depth == 0; });
    return Imaging::createImage(header.width, header.height, std::move(data), bitDepth, true, format);
}

void writePnm(const Imaging::Image& image, AtomicFile& file) {
    writeRows(image, file,
              fmt::format("{}\n{} {}\n{}\n", samplesPerPixel(image) == 1 ? "P5" : "P6", image.getWidth(),
                          image.getHeight(), FileSamples::largestValue(image)));
}

void writePam(const Imaging::Image& image, AtomicFile& file) {
    const unsigned samples = samplesPerPixel(image);
    const auto* const type = std::find_if(std::begin(kTupleTypes), std::end(kTupleTypes),
                                          [&](const TupleType& row) { return row.samplesPerPixel == samples; });
    writeRows(image, file,
              fmt::format("P7\nWIDTH {}\nHEIGHT {}\nDEPTH {}\nMAXVAL {}\nTUPLTYPE {}\nENDHDR\n", image.getWidth(),
                          image.getHeight(), samples, FileSamples::largestValue(image), type->name));
}

} // namespace QuillTool
