// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/PngFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "ImageFiles/FileSamples.h"
#include "ImageFiles/InputFile.h"
#include "ImageFiles/PngHandle.h"

namespace QuillTool {

namespace {

/// The largest compression ratio of deflate: 258 bytes in two bits.
constexpr std::uint64_t kLargestCompression = 1032;
/// Takes a third of the default level's time; files are at most a tenth larger.
constexpr int kCompressionLevel = 1;
constexpr unsigned kWordMaximum = 65535;

/// The bytes that remain for libpng.
struct Source {
    const unsigned char* next;
    std::size_t left;
};

/// The content of the first chunks of a file.
struct PngHeader {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t rowBytes = 0;
    unsigned bitDepth = 0;
};

void readBytes(png_structp png, png_bytep target, std::size_t size) {
    Source& source = *static_cast<Source*>(png_get_io_ptr(png));
    if (size > source.left) {
        png_error(png, "the file is truncated");
    }
    std::memcpy(target, source.next, size);
    source.next += size;
    source.left -= size;
}

void writeBytes(png_structp png, png_bytep bytes, std::size_t size) {
    static_cast<AtomicFile*>(png_get_io_ptr(png))->write(bytes, size);
}

void leaveFlushToTheFile(png_structp /*png*/) {}

/// Returns the common depth of all channels of a 16-bit file by its significant bits if images support it;
/// otherwise 16.
unsigned significantBits(png_structp png, png_infop info) {
    png_color_8p bits = nullptr;
    if (png_get_sBIT(png, info, &bits) == 0 || png_get_valid(png, info, PNG_INFO_tRNS) != 0) {
        return 16;
    }
    const unsigned type = png_get_color_type(png, info);
    const unsigned first = (type & PNG_COLOR_MASK_COLOR) != 0 ? bits->red : bits->gray;
    const bool sameColors = (type & PNG_COLOR_MASK_COLOR) == 0 || (bits->green == first && bits->blue == first);
    const bool sameAlpha = (type & PNG_COLOR_MASK_ALPHA) == 0 || bits->alpha == first;
    return sameColors && sameAlpha && (first == 10 || first == 12) ? first : 16;
}

png_color_8 sameBits(unsigned bits) {
    const auto byte = static_cast<png_byte>(bits);
    return {byte, byte, byte, byte, byte};
}

/// Sets libpng to deliver grey, RGB or RGBA in bytes or little-endian words. Returns the significant bits.
unsigned chooseSamples(png_structp png, png_infop info) {
    const bool words = png_get_bit_depth(png, info) == 16;
    const unsigned type = png_get_color_type(png, info);
    png_set_expand(png);
    if (type == PNG_COLOR_TYPE_GRAY_ALPHA ||
        (type == PNG_COLOR_TYPE_GRAY && png_get_valid(png, info, PNG_INFO_tRNS) != 0)) {
        png_set_gray_to_rgb(png);
    }
    const unsigned bitDepth = words ? significantBits(png, info) : 8;
    if (words) {
        const png_color_8 shift = sameBits(bitDepth);
        png_set_shift(png, &shift);
        png_set_swap(png);
    }
    png_set_interlace_handling(png);
    return bitDepth;
}

/// Returns the PNG colour type of 1, 3 or 4 samples per pixel.
int colorType(unsigned samples) {
    return (samples > 1 ? PNG_COLOR_MASK_COLOR : 0) | (samples == 4 ? PNG_COLOR_MASK_ALPHA : 0);
}

} // namespace

std::unique_ptr<Imaging::Image> readPng(const std::vector<unsigned char>& bytes) {
    Source source{bytes.data(), bytes.size()};
    PngHeader header;
    PngHandle handle(PngHandle::Use::Reading);
    handle.run([&](png_structp png, png_infop info) {
        png_set_read_fn(png, &source, &readBytes);
        png_read_info(png, info);
        header.width = png_get_image_width(png, info);
        header.height = png_get_image_height(png, info);
        header.rowBytes = png_get_rowbytes(png, info);
    });
    if (header.rowBytes * header.height / kLargestCompression > bytes.size()) {
        throw std::runtime_error(fmt::format("the header promises {} x {} pixels, far more than fit into {} bytes",
                                             header.width, header.height, bytes.size()));
    }

    unsigned channels = 0;
    handle.run([&](png_structp png, png_infop info) {
        header.bitDepth = chooseSamples(png, info);
        png_read_update_info(png, info);
        header.rowBytes = png_get_rowbytes(png, info);
        channels = png_get_channels(png, info);
    });
    const std::size_t size = checkedImageBytes(header.width, header.height, header.rowBytes / header.width);
    std::vector<unsigned char> data(size);
    std::vector<png_bytep> rows(header.height);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        rows[row] = &data[row * header.rowBytes];
    }
    handle.run([&](png_structp png, png_infop /*info*/) {
        png_read_image(png, rows.data());
        png_read_end(png, nullptr);
    });
    return Imaging::createImage(static_cast<unsigned>(header.width), static_cast<unsigned>(header.height),
                                std::move(data), header.bitDepth, true, fileLayout(channels));
}

void writePng(const Imaging::Image& image, AtomicFile& file) {
    const bool words = image.getBytesPerChannel() == 2;
    FileSamples samples(image, words ? kWordMaximum : FileSamples::largestValue(image));
    PngHandle handle(PngHandle::Use::Writing);
    handle.run([&](png_structp png, png_infop info) {
        png_set_write_fn(png, &file, &writeBytes, &leaveFlushToTheFile);
        png_set_compression_level(png, kCompressionLevel);
        png_set_IHDR(png, info, image.getWidth(), image.getHeight(), words ? 16 : 8, colorType(samplesPerPixel(image)),
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (words && image.getBitDepth() < 16) {
            const png_color_8 bits = sameBits(image.getBitDepth());
            png_set_sBIT(png, info, &bits);
        }
        png_write_info(png, info);
        for (unsigned row = 0; row < image.getHeight(); ++row) {
            png_write_row(png, samples.row(row));
        }
        png_write_end(png, nullptr);
    });
}

} // namespace QuillTool
