// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "Serve/Pictures/Analysis.h"
#include "Serve/Pictures/File.h"
#include "Serve/Pictures/JpegEncoder.h"
#include "Serve/Pictures/PictureMaker.h"
#include "Serve/Pictures/PixelReport.h"
#include "Support/Images.h"
#include "Support/TemporaryFolder.h"
#include "Tools/ChildProcess.h"
#include "Tools/Serve/Refusals.h"

namespace {

using namespace QuillTool;
using namespace QuillTool::Serve;
using Imaging::Image;
using Imaging::IMAGE_FORMAT;
using TestSupport::allFormats;
using TestSupport::patternImage;
using Color = std::array<unsigned, 3>; // red, green, blue

constexpr std::pair<unsigned, bool> kDepths[] = {{8, true}, {10, true}, {12, false}, {16, true}};

bool isMosaic(const Image& image) {
    return image.getFormat() >= IMAGE_FORMAT::BAYER_RGGB && image.getFormat() <= IMAGE_FORMAT::BAYER_BGGR;
}

Color colorOf(const Bitmap& bitmap, unsigned row, unsigned column) {
    const std::size_t samples = bitmap.layout == Bitmap::Layout::Grey  ? 1
                                : bitmap.layout <= Bitmap::Layout::Bgr ? 3
                                                                       : 4;
    const unsigned char* const pixel = bitmap.pixels + (std::size_t{row} * bitmap.width + column) * samples;
    if (samples == 1) {
        return {*pixel, *pixel, *pixel};
    }
    const bool isReversed = bitmap.layout == Bitmap::Layout::Bgr || bitmap.layout == Bitmap::Layout::Bgra;
    return {pixel[isReversed ? 2 : 0], pixel[1], pixel[isReversed ? 0 : 2]};
}

/// The average of a block of an image's pixels, by the image's own account of them.
Color averageOf(const Image& image, unsigned scale, unsigned row, unsigned column) {
    constexpr std::array<unsigned, 4> kMosaicChannels{0, 1, 1, 2};
    std::array<double, 3> sums{};
    std::array<double, 3> counts{};
    for (unsigned k = 0; k < scale * scale; ++k) {
        const unsigned y = row * scale + k / scale;
        const unsigned x = column * scale + k % scale;
        const Imaging::Pixel pixel = image.getPixel(y, x);
        for (unsigned channel = 0; channel < image.getNumberOfChannels() && channel < 4; ++channel) {
            const unsigned color = isMosaic(image) ? kMosaicChannels[channel] : channel;
            if (color < 3 && (!isMosaic(image) || pixel.channel[channel] > 0)) {
                sums[color] += pixel.channel[channel];
            }
        }
    }
    const double pixels = scale * scale;
    counts = isMosaic(image) ? std::array{pixels / 4, pixels / 2, pixels / 4} : std::array{pixels, pixels, pixels};
    Color color{};
    for (unsigned k = 0; k < 3; ++k) {
        const unsigned source = image.getFormat() == IMAGE_FORMAT::MONO ? 0 : k;
        color[k] = static_cast<unsigned>(sums[source] / counts[source]) >> (image.getBitDepth() - 8);
    }
    return color;
}

/// The same of an image whose mosaic is interpolated.
Color colorOf(const Image& image, unsigned row, unsigned column) {
    return averageOf(image, 1, row, column);
}

std::unique_ptr<Image> interpolated(const std::unique_ptr<Image>& image) {
    return isMosaic(*image) ? convertImage(image, IMAGE_FORMAT::RGB) : cloneImage(image);
}

void expectNear(const Color& color, const Color& expected, unsigned tolerance) {
    for (unsigned k = 0; k < 3; ++k) {
        ASSERT_LE(color[k] > expected[k] ? color[k] - expected[k] : expected[k] - color[k], tolerance)
            << "channel " << k << ": " << color[k] << " instead of " << expected[k];
    }
}

TEST(Picture, ShowsTheColorsOfEveryLayoutAndDepthAtEveryScale) {
    PictureMaker maker; // one, to which all images come in turn
    for (const IMAGE_FORMAT format : allFormats()) {
        for (const auto& [bitDepth, isLittleEndian] : kDepths) {
            const auto image = patternImage(26, 19, bitDepth, format, isLittleEndian);
            const auto colors = interpolated(image);
            for (const unsigned scale : {1U, 2U, 4U, 8U}) {
                SCOPED_TRACE(getFormatName(format) + " " + std::to_string(bitDepth) + ", " + std::to_string(scale));
                const Bitmap bitmap = maker.make(*image, scale);
                ASSERT_EQ(bitmap.width, 26 / scale);
                ASSERT_EQ(bitmap.height, 19 / scale);
                for (unsigned k = 0; k < bitmap.width * bitmap.height; ++k) {
                    const unsigned row = k / bitmap.width;
                    const unsigned column = k % bitmap.width;
                    const unsigned tolerance = isMosaic(*image) && scale == 1 ? 1 : 0; // high bits are interpolated
                    ASSERT_NO_FATAL_FAILURE(expectNear(
                        colorOf(bitmap, row, column),
                        scale == 1 ? colorOf(*colors, row, column) : averageOf(*image, scale, row, column), tolerance));
                }
            }
        }
    }
    const auto thin = patternImage(3, 100, 8, IMAGE_FORMAT::BAYER_GRBG, true);
    EXPECT_EQ(maker.make(*thin, 8).width, 1U); // not 0
}

TEST(Picture, BecomesAJpegOfItsColors) {
    const std::unique_ptr<void, int (*)(void*)> decoder(tjInitDecompress(), &tjDestroy);
    JpegEncoder encoder;
    PictureMaker maker;
    for (const unsigned side : {64U, 16U, 100U}) { // also after a larger one
        for (const IMAGE_FORMAT format : {IMAGE_FORMAT::MONO, IMAGE_FORMAT::BGR, IMAGE_FORMAT::RGBA}) {
            auto image = patternImage(side, side, 8, format, true);
            for (unsigned k = 0; k < side * side; ++k) {
                const double x = k % side * 255.0 / side;
                const double y = std::floor(k / side) * 255.0 / side;
                image->setPixel(k / side, k % side, {{x, y, 255 - x, 255}});
            }
            const Bitmap bitmap = maker.make(*image, 1);
            const std::string jpeg = encoder.encode(bitmap, 95);
            std::vector<unsigned char> decoded(std::size_t{side} * side * 3);
            const auto* const bytes = reinterpret_cast<const unsigned char*>(jpeg.data());
            int width = 0;
            int height = 0;
            int sampling = 0;
            int space = 0;
            ASSERT_EQ(tjDecompressHeader3(decoder.get(), bytes, jpeg.size(), &width, &height, &sampling, &space), 0);
            EXPECT_EQ(std::pair(width, height), std::pair(int(side), int(side)));
            EXPECT_EQ(sampling, format == IMAGE_FORMAT::MONO ? TJSAMP_GRAY : TJSAMP_420);
            ASSERT_EQ(tjDecompress2(decoder.get(), bytes, jpeg.size(), decoded.data(), 0, 0, 0, TJPF_RGB, 0), 0);
            const Bitmap result{decoded.data(), side, side, Bitmap::Layout::Rgb};
            for (unsigned k = 0; k < side * side; ++k) {
                ASSERT_NO_FATAL_FAILURE(
                    expectNear(colorOf(result, k / side, k % side), colorOf(*image, k / side, k % side), 20));
            }
        }
    }
}

TEST(Measurement, CountsSamplesByColor) {
    for (const auto& [bitDepth, isLittleEndian] : kDepths) {
        const double largest = (1U << bitDepth) - 1;
        const double half = (1U << (bitDepth - 1));
        auto image = patternImage(2000, 1000, bitDepth, IMAGE_FORMAT::BAYER_GBRG, isLittleEndian);
        for (unsigned k = 0; k < 2000 * 1000; ++k) {
            image->setPixel(k / 2000, k % 2000, {{largest, half, half, 0}});
        }
        const Json analysis = analyse(*image);
        const double red = analysis["histogram"][0][255];
        EXPECT_EQ(analysis["channels"], Json::parse(R"(["Red", "Green", "Blue"])"));
        EXPECT_GT(red, 30'000);
        EXPECT_EQ(analysis["histogram"][1][128], 2 * red);
        EXPECT_EQ(analysis["histogram"][2][0], red);
        EXPECT_DOUBLE_EQ(analysis["saturated"], 0.25);
        EXPECT_EQ(Json(analysis["histogram"][0]).size(), 256U);
    }
}

/// Stripes of a period in pixels, by the same light.
std::unique_ptr<Image> stripes(IMAGE_FORMAT format, unsigned bitDepth, double period, double light) {
    auto image = patternImage(160, 120, bitDepth, format, true);
    for (unsigned k = 0; k < 160 * 120; ++k) {
        const double sample = light * (1U << bitDepth) * (0.5 + 0.3 * std::sin(k % 160 * 6.283 / period));
        image->setPixel(k / 160, k % 160, {{sample, sample, sample, sample}});
    }
    return image;
}

TEST(Measurement, KnowsSharpFromSoftInAnyLightAndLayout) {
    for (const IMAGE_FORMAT format : allFormats()) {
        SCOPED_TRACE(getFormatName(format));
        const double sharp = analyse(*stripes(format, 12, 6, 1))["focus"];
        EXPECT_GT(sharp, 20 * double(analyse(*stripes(format, 12, 20, 1))["focus"]));
        EXPECT_NEAR(sharp, analyse(*stripes(format, 12, 6, 0.5))["focus"], sharp / 20);
        EXPECT_NEAR(sharp, analyse(*stripes(format, 8, 6, 1))["focus"], sharp / 20);
    }
    EXPECT_EQ(analyse(*stripes(IMAGE_FORMAT::MONO, 8, 6, 0))["focus"], 0);
    EXPECT_EQ(analyse(*patternImage(1, 1, 8, IMAGE_FORMAT::BAYER_BGGR, true))["focus"], 0);
}

TEST(PixelReport, HasTheSamplesAndTheColorsOfThePicture) {
    for (const IMAGE_FORMAT format : allFormats()) {
        for (const auto& [bitDepth, isLittleEndian] : kDepths) {
            const CameraInterface::Frame frame{patternImage(41, 33, bitDepth, format, isLittleEndian), {}};
            PictureMaker maker;
            const Bitmap whole = maker.make(*frame.image, 1);
            for (const PixelArea& area : {PixelArea{0, 0, 3, 1}, {13, 8, 5, 4}, {40, 32, 1, 1}, {0, 0, 41, 33}}) {
                SCOPED_TRACE(getFormatName(format) + " " + std::to_string(bitDepth) + ", " + std::to_string(area.x));
                const Json report = reportPixels(frame, area);
                for (unsigned k = 0; k < area.width * area.height; ++k) {
                    const unsigned row = k / area.width;
                    const unsigned column = k % area.width;
                    const Json raw = report["raw"][row][column];
                    const Imaging::Pixel pixel = frame.image->getPixel(area.y + row, area.x + column);
                    const double* const first = std::begin(pixel.channel);
                    if (raw.is_array()) {
                        ASSERT_EQ(raw, Json(std::vector<unsigned>(first, first + 3)));
                    } else {
                        // The other channels are 0.
                        ASSERT_EQ(raw, *std::max_element(first, first + 4));
                    }
                    ASSERT_EQ(report["converted"][row][column], Json(colorOf(whole, area.y + row, area.x + column)));
                }
            }
        }
    }
    const CameraInterface::Frame frame{patternImage(100, 100, 8, IMAGE_FORMAT::BAYER_GRBG, true), {}};
    EXPECT_EQ(reportPixels(frame, {4, 7, 3, 2})["mosaic"], Json::parse(R"(["BGB", "GRG"])"));
    for (const PixelArea& area : {PixelArea{0, 0, 65, 1}, {0, 0, 1, 0}, {99, 0, 2, 1}, {0xFFFFFFFF, 0, 2, 1}}) {
        expectRefused(422, [&] { reportPixels(frame, area); });
    }
}

TEST(CapturedFile, HoldsTheImage) {
    const TestSupport::TemporaryFolder folder;
    const auto mosaic = patternImage(30, 20, 12, IMAGE_FORMAT::BAYER_RGGB, true);
    for (const std::string format : {"png", "tiff", "dng"}) {
        const File file = encodeFile(mosaic, format, "7-00012", {"Model", "7"});
        EXPECT_EQ(file.name, "7-00012." + format);
        std::ofstream(folder.file(file.name), std::ios::binary) << file.bytes;
        const auto read = readImageFile(folder.file(file.name), {});
        EXPECT_EQ(read->getData(), mosaic->getData());
        EXPECT_EQ(read->getBitDepth(), 12U);
    }
    // A colour that the camera computed: declared as the sensor's layout with the bits of a whole pixel.
    const auto computed = Imaging::createImage(2, 1, {1, 2, 3, 4, 5, 6}, 24, true, IMAGE_FORMAT::BAYER_RGGB);
    const File file = encodeFile(computed, "png", "computed", {});
    std::ofstream(folder.file(file.name), std::ios::binary) << file.bytes;
    EXPECT_EQ(readImageFile(folder.file(file.name), {})->getData(), (std::vector<unsigned char>{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(encodeFile(computed, "jpeg", "computed", {}).bytes.substr(0, 2), "\xFF\xD8");

    expectRefused(422, [&] { encodeFile(patternImage(4, 4, 8, IMAGE_FORMAT::MONO, true), "dng", "a", {}); });
    expectRefused(400, [&] { encodeFile(mosaic, "raw", "a", {}); });
}

TEST(CapturedFile, LiesInAnArchiveThatTarReads) {
    const TestSupport::TemporaryFolder folder;
    std::ofstream archive(folder.file("a.tar"), std::ios::binary);
    for (const std::size_t size : {0, 1, 512, 513}) {
        const std::string bytes(size, 'x');
        archive << tarHeader(std::to_string(size) + ".png", size, 1'700'000'000) << bytes << tarPadding(size);
    }
    archive << std::string(kTarEndSize, '\0');
    archive.close();
    const auto listed = TestSupport::runChild({"tar", {"--utc", "-tvf", folder.file("a.tar")}, {"LC_ALL=C"}});
    EXPECT_EQ(listed.errors, "");
    EXPECT_EQ(listed.output, "-rw-r--r-- 0/0               0 2023-11-14 22:13 0.png\n"
                             "-rw-r--r-- 0/0               1 2023-11-14 22:13 1.png\n"
                             "-rw-r--r-- 0/0             512 2023-11-14 22:13 512.png\n"
                             "-rw-r--r-- 0/0             513 2023-11-14 22:13 513.png\n");
}

} // namespace
