// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/PixelReport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Serve/Cameras/Refusal.h"
#include "Serve/Pictures/PictureMaker.h"
#include "Serve/Pictures/SampleView.h"

namespace QuillTool::Serve {

namespace {

constexpr unsigned kMostPixels = 64; // in either direction
/// More than the interpolation of a mosaic looks at, and even, so that a part begins with the colour of the whole.
constexpr unsigned kBorder = 4;
constexpr char kColorLetters[] = "RGB";

void requireInside(const SampleView& view, const PixelArea& area) {
    if (area.width == 0 || area.height == 0 || area.width > kMostPixels || area.height > kMostPixels) {
        throw Refusal(422, "InvalidValue", fmt::format("{} x {} pixels cannot be reported.", area.width, area.height),
                      fmt::format("Ask for 1 x 1 to {0} x {0} pixels.", kMostPixels));
    }
    if (std::uint64_t{area.x} + area.width > view.width || std::uint64_t{area.y} + area.height > view.height) {
        throw Refusal(422, "InvalidValue", "The pixels lie outside of the frame.",
                      fmt::format("The frame has {} x {} pixels.", view.width, view.height));
    }
}

/// Calls @p pixel with every row and column of an area.
/// @return an array for each row, of what it returned
template <typename Pixel>
Json rowsOf(const PixelArea& area, Pixel pixel) {
    Json rows = Json::array();
    for (unsigned row = area.y; row < area.y + area.height; ++row) {
        Json columns = Json::array();
        for (unsigned column = area.x; column < area.x + area.width; ++column) {
            columns.push_back(pixel(row, column));
        }
        rows.push_back(std::move(columns));
    }
    return rows;
}

Json rawSamples(const SampleView& view, const PixelArea& area) {
    return withReader(view, [&](auto read) {
        return rowsOf(area, [&](unsigned row, unsigned column) -> Json {
            const std::size_t place = view.index(row, column);
            if (view.channels == 1 || view.isMosaic) {
                return read(place);
            }
            Json samples = Json::array();
            for (const std::size_t start : view.channelStart) {
                samples.push_back(read(start + place));
            }
            return samples;
        });
    });
}

Json mosaicLetters(const SampleView& view, const PixelArea& area) {
    Json rows = Json::array();
    for (unsigned row = area.y; row < area.y + area.height; ++row) {
        std::string letters;
        for (unsigned column = area.x; column < area.x + area.width; ++column) {
            letters += kColorLetters[view.mosaicChannel(row, column)];
        }
        rows.push_back(std::move(letters));
    }
    return rows;
}

/// Returns the area with a border as wide as the image has it.
PixelArea withBorder(const SampleView& view, const PixelArea& area) {
    const unsigned left = std::max(area.x & ~1U, kBorder) - kBorder;
    const unsigned top = std::max(area.y & ~1U, kBorder) - kBorder;
    return {left, top, std::min(area.x + area.width + kBorder, view.width) - left,
            std::min(area.y + area.height + kBorder, view.height) - top};
}

std::unique_ptr<Imaging::Image> copyPart(const Imaging::Image& image, const SampleView& view, const PixelArea& part) {
    const unsigned planes = image.getNumberOfPlanes();
    const std::size_t pixelBytes = view.columnStep * view.bytesPerSample();
    std::vector<unsigned char> bytes;
    for (unsigned plane = 0; plane < planes; ++plane) {
        for (unsigned row = part.y; row < part.y + part.height; ++row) {
            const std::size_t first = ((std::size_t{plane} * view.height + row) * view.width + part.x) * pixelBytes;
            bytes.insert(bytes.end(), view.data + first, view.data + first + part.width * pixelBytes);
        }
    }
    return Imaging::createImage(part.width, part.height, std::move(bytes), view.bitDepth, image.isLittleEndian(),
                                view.format);
}

/// Where a bitmap's pixel has red, green and blue, by Bitmap::Layout.
struct ColorPlaces {
    std::size_t bytesPerPixel;
    std::array<std::size_t, 3> places;
};
constexpr ColorPlaces kColorPlaces[] = {{1, {0, 0, 0}}, {3, {0, 1, 2}}, {3, {2, 1, 0}}, {4, {0, 1, 2}}, {4, {2, 1, 0}}};

Json convertedColors(const Imaging::Image& image, const SampleView& view, const PixelArea& area) {
    const PixelArea part = withBorder(view, area);
    const auto copy = copyPart(image, view, part);
    PictureMaker maker;
    const Bitmap bitmap = maker.make(*copy, 1);
    const ColorPlaces& color = kColorPlaces[static_cast<std::size_t>(bitmap.layout)];
    return rowsOf(area, [&](unsigned row, unsigned column) -> Json {
        const unsigned char* const pixel =
            bitmap.pixels + (std::size_t{row - part.y} * bitmap.width + (column - part.x)) * color.bytesPerPixel;
        Json samples = Json::array();
        for (const std::size_t place : color.places) {
            samples.push_back(pixel[place]);
        }
        return samples;
    });
}

} // namespace

Json reportPixels(const CameraInterface::Frame& frame, const PixelArea& area) {
    const Imaging::Image& image = *frame.image;
    const SampleView view(image);
    requireInside(view, area);
    Json report{{"frame", frame.information.number},
                {"x", area.x},
                {"y", area.y},
                {"width", area.width},
                {"height", area.height},
                {"layout", Imaging::getFormatName(view.format)},
                {"bitDepth", view.bitDepth},
                {"channels", view.channelNames()},
                {"raw", rawSamples(view, area)},
                {"converted", convertedColors(image, view, area)}};
    if (view.isMosaic) {
        report["mosaic"] = mosaicLetters(view, area);
    }
    return report;
}

} // namespace QuillTool::Serve
