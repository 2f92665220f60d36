// SPDX-License-Identifier: Apache-2.0

#include "PixelFormats.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace GenICamAdapter {

namespace {

using Imaging::IMAGE_FORMAT;
using Imaging::SamplePacking;

constexpr SamplePacking kUnused = SamplePacking::TenP;
constexpr unsigned kUpFrom14 = 2;

// Codes and names of the PFNC, version 2.
constexpr PixelFormat kPixelFormats[] = {
    // clang-format off
    {0x01080001, "Mono8", IMAGE_FORMAT::MONO, 8, Unpacking::None, kUnused},
    {0x01100003, "Mono10", IMAGE_FORMAT::MONO, 10, Unpacking::None, kUnused},
    {0x01100005, "Mono12", IMAGE_FORMAT::MONO, 12, Unpacking::None, kUnused},
    {0x01100025, "Mono14", IMAGE_FORMAT::MONO, 16, Unpacking::Shift, kUnused},
    {0x01100007, "Mono16", IMAGE_FORMAT::MONO, 16, Unpacking::None, kUnused},
    {0x010A0046, "Mono10p", IMAGE_FORMAT::MONO, 10, Unpacking::Packed, SamplePacking::TenP},
    {0x010C0047, "Mono12p", IMAGE_FORMAT::MONO, 12, Unpacking::Packed, SamplePacking::TwelveP},
    {0x010C0004, "Mono10Packed", IMAGE_FORMAT::MONO, 10, Unpacking::Packed, SamplePacking::GigETen},
    {0x010C0006, "Mono12Packed", IMAGE_FORMAT::MONO, 12, Unpacking::Packed, SamplePacking::GigETwelve},
    {0x01080008, "BayerGR8", IMAGE_FORMAT::BAYER_GRBG, 8, Unpacking::None, kUnused},
    {0x01080009, "BayerRG8", IMAGE_FORMAT::BAYER_RGGB, 8, Unpacking::None, kUnused},
    {0x0108000A, "BayerGB8", IMAGE_FORMAT::BAYER_GBRG, 8, Unpacking::None, kUnused},
    {0x0108000B, "BayerBG8", IMAGE_FORMAT::BAYER_BGGR, 8, Unpacking::None, kUnused},
    {0x0110000C, "BayerGR10", IMAGE_FORMAT::BAYER_GRBG, 10, Unpacking::None, kUnused},
    {0x0110000D, "BayerRG10", IMAGE_FORMAT::BAYER_RGGB, 10, Unpacking::None, kUnused},
    {0x0110000E, "BayerGB10", IMAGE_FORMAT::BAYER_GBRG, 10, Unpacking::None, kUnused},
    {0x0110000F, "BayerBG10", IMAGE_FORMAT::BAYER_BGGR, 10, Unpacking::None, kUnused},
    {0x01100010, "BayerGR12", IMAGE_FORMAT::BAYER_GRBG, 12, Unpacking::None, kUnused},
    {0x01100011, "BayerRG12", IMAGE_FORMAT::BAYER_RGGB, 12, Unpacking::None, kUnused},
    {0x01100012, "BayerGB12", IMAGE_FORMAT::BAYER_GBRG, 12, Unpacking::None, kUnused},
    {0x01100013, "BayerBG12", IMAGE_FORMAT::BAYER_BGGR, 12, Unpacking::None, kUnused},
    {0x0110002E, "BayerGR16", IMAGE_FORMAT::BAYER_GRBG, 16, Unpacking::None, kUnused},
    {0x0110002F, "BayerRG16", IMAGE_FORMAT::BAYER_RGGB, 16, Unpacking::None, kUnused},
    {0x01100030, "BayerGB16", IMAGE_FORMAT::BAYER_GBRG, 16, Unpacking::None, kUnused},
    {0x01100031, "BayerBG16", IMAGE_FORMAT::BAYER_BGGR, 16, Unpacking::None, kUnused},
    {0x010A0056, "BayerGR10p", IMAGE_FORMAT::BAYER_GRBG, 10, Unpacking::Packed, SamplePacking::TenP},
    {0x010A0058, "BayerRG10p", IMAGE_FORMAT::BAYER_RGGB, 10, Unpacking::Packed, SamplePacking::TenP},
    {0x010A0054, "BayerGB10p", IMAGE_FORMAT::BAYER_GBRG, 10, Unpacking::Packed, SamplePacking::TenP},
    {0x010A0052, "BayerBG10p", IMAGE_FORMAT::BAYER_BGGR, 10, Unpacking::Packed, SamplePacking::TenP},
    {0x010C0057, "BayerGR12p", IMAGE_FORMAT::BAYER_GRBG, 12, Unpacking::Packed, SamplePacking::TwelveP},
    {0x010C0059, "BayerRG12p", IMAGE_FORMAT::BAYER_RGGB, 12, Unpacking::Packed, SamplePacking::TwelveP},
    {0x010C0055, "BayerGB12p", IMAGE_FORMAT::BAYER_GBRG, 12, Unpacking::Packed, SamplePacking::TwelveP},
    {0x010C0053, "BayerBG12p", IMAGE_FORMAT::BAYER_BGGR, 12, Unpacking::Packed, SamplePacking::TwelveP},
    {0x010C0026, "BayerGR10Packed", IMAGE_FORMAT::BAYER_GRBG, 10, Unpacking::Packed, SamplePacking::GigETen},
    {0x010C0027, "BayerRG10Packed", IMAGE_FORMAT::BAYER_RGGB, 10, Unpacking::Packed, SamplePacking::GigETen},
    {0x010C0028, "BayerGB10Packed", IMAGE_FORMAT::BAYER_GBRG, 10, Unpacking::Packed, SamplePacking::GigETen},
    {0x010C0029, "BayerBG10Packed", IMAGE_FORMAT::BAYER_BGGR, 10, Unpacking::Packed, SamplePacking::GigETen},
    {0x010C002A, "BayerGR12Packed", IMAGE_FORMAT::BAYER_GRBG, 12, Unpacking::Packed, SamplePacking::GigETwelve},
    {0x010C002B, "BayerRG12Packed", IMAGE_FORMAT::BAYER_RGGB, 12, Unpacking::Packed, SamplePacking::GigETwelve},
    {0x010C002C, "BayerGB12Packed", IMAGE_FORMAT::BAYER_GBRG, 12, Unpacking::Packed, SamplePacking::GigETwelve},
    {0x010C002D, "BayerBG12Packed", IMAGE_FORMAT::BAYER_BGGR, 12, Unpacking::Packed, SamplePacking::GigETwelve},
    {0x02180014, "RGB8", IMAGE_FORMAT::RGB, 8, Unpacking::None, kUnused},
    {0x02180015, "BGR8", IMAGE_FORMAT::BGR, 8, Unpacking::None, kUnused},
    {0x02200016, "RGBa8", IMAGE_FORMAT::RGBA, 8, Unpacking::None, kUnused},
    {0x02200017, "BGRa8", IMAGE_FORMAT::BGRA, 8, Unpacking::None, kUnused},
    {0x02180021, "RGB8_Planar", IMAGE_FORMAT::RGB_PLANAR, 8, Unpacking::None, kUnused},
    {0x0210001F, "YUV422_8_UYVY", IMAGE_FORMAT::RGB, 8, Unpacking::Uyvy, kUnused},
    {0x02100032, "YUV422_8", IMAGE_FORMAT::RGB, 8, Unpacking::Yuyv, kUnused},
    // clang-format on
};

struct OtherName {
    const char* other;
    const char* name;
};

/// Names of the first version of GigE Vision.
constexpr OtherName kOtherNames[] = {{"RGB8Packed", "RGB8"},
                                     {"BGR8Packed", "BGR8"},
                                     {"RGBA8Packed", "RGBa8"},
                                     {"BGRA8Packed", "BGRa8"},
                                     {"RGB8Planar", "RGB8_Planar"},
                                     {"YUV422Packed", "YUV422_8_UYVY"},
                                     {"YUV422_YUYV_Packed", "YUV422_8"}};

unsigned samplesPerPixel(IMAGE_FORMAT layout) {
    switch (layout) {
    case IMAGE_FORMAT::RGB:
    case IMAGE_FORMAT::BGR:
    case IMAGE_FORMAT::RGB_PLANAR:
        return 3;
    case IMAGE_FORMAT::RGBA:
    case IMAGE_FORMAT::BGRA:
        return 4;
    default:
        return 1;
    }
}

/// The largest image that is taken for one: the product of its dimensions fits 48 bits.
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 48;

} // namespace

std::optional<std::size_t> PixelFormat::frameBytes(std::uint32_t width, std::uint32_t height) const {
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (pixels > kMostPixels) {
        return std::nullopt;
    }
    switch (unpacking) {
    case Unpacking::Packed:
        return Imaging::getPackedBytes(packing, pixels);
    case Unpacking::Uyvy:
    case Unpacking::Yuyv:
        return width % 2 != 0 ? std::nullopt : std::optional<std::size_t>(pixels * 2); // two pixels share chroma
    default:
        return imageBytes(width, height);
    }
}

std::optional<std::size_t> PixelFormat::imageBytes(std::uint32_t width, std::uint32_t height) const {
    const std::uint64_t pixels = std::uint64_t{width} * height;
    return pixels > kMostPixels ? std::nullopt
                                : std::optional<std::size_t>(pixels * samplesPerPixel(layout) * (depth > 8 ? 2 : 1));
}

void PixelFormat::unpack(const unsigned char* frame, std::uint32_t width, std::uint32_t height,
                         unsigned char* image) const {
    const std::size_t pixels = std::size_t{width} * height;
    auto* const samples = reinterpret_cast<std::uint16_t*>(image); // the pool's memory is aligned
    switch (unpacking) {
    case Unpacking::Packed:
        Imaging::unpackSamples(packing, frame, pixels, samples);
        break;
    case Unpacking::Shift:
        std::copy_n(frame, pixels * 2, image);
        Imaging::shiftSamplesUp(samples, pixels, kUpFrom14);
        break;
    case Unpacking::Uyvy:
    case Unpacking::Yuyv:
        Imaging::convertYuv422ToRgb(frame, unpacking == Unpacking::Uyvy, static_cast<int>(width),
                                    static_cast<int>(height), image);
        break;
    case Unpacking::None:
        break;
    }
}

const PixelFormat* findPixelFormat(std::uint32_t code) {
    const auto* const row = std::find_if(std::begin(kPixelFormats), std::end(kPixelFormats),
                                         [code](const PixelFormat& format) { return format.code == code; });
    return row == std::end(kPixelFormats) ? nullptr : row;
}

const PixelFormat* findPixelFormat(const std::string& name) {
    std::string known = name;
    for (const OtherName& row : kOtherNames) {
        if (name == row.other) {
            known = row.name;
        }
    }
    const auto* const row = std::find_if(std::begin(kPixelFormats), std::end(kPixelFormats),
                                         [&known](const PixelFormat& format) { return known == format.name; });
    return row == std::end(kPixelFormats) ? nullptr : row;
}

std::string colorFormatOf(const std::string& pixelFormat) {
    const PixelFormat* const format = findPixelFormat(pixelFormat);
    if (format == nullptr) {
        return pixelFormat;
    }
    const std::string name = Imaging::getFormatName(format->layout);
    const std::string mosaic = "BAYER_";
    return name.compare(0, mosaic.size(), mosaic) == 0 ? name.substr(mosaic.size()) : name;
}

} // namespace GenICamAdapter
