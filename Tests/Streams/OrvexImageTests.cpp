// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/OrvexCamera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

#include "Imaging/Raw.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace CameraInterface;
using Imaging::IMAGE_FORMAT;
using Imaging::Raw;
using SoftwareDevices::ColorFormat;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Scene;

constexpr unsigned kWidth = 24;
constexpr unsigned kHeight = 16;

using Rgb = std::array<double, 3>;

/// The colours of a ramp: every sensor pixel has a different light in each colour, and the mean of several pixels is
/// that of their mean position.
Rgb rampAt(double x, double y) {
    return {20 + 9 * x, 10 + 15 * y, 30 + 4 * (x + y)};
}

/// The colours of four quadrants.
Rgb quadrantAt(unsigned x, unsigned y) {
    static const std::array<Rgb, 4> colors{{{200, 40, 20}, {30, 180, 60}, {10, 50, 220}, {140, 140, 140}}};
    return colors[(y < kHeight / 2 ? 0 : 2) + (x < kWidth / 2 ? 0 : 1)];
}

template <typename ColorAt>
Scene sceneOf(ColorAt colorAt) {
    Scene scene{kWidth, kHeight, {}};
    for (unsigned i = 0; i < kWidth * kHeight; ++i) {
        for (const double light : colorAt(i % kWidth, i / kWidth)) {
            scene.rgb.push_back(static_cast<std::uint8_t>(light));
        }
    }
    return scene;
}

struct Layout {
    ColorFormat colorFormat;
    IMAGE_FORMAT imageFormat;
    std::array<int, 4> colors; ///< of a two-by-two cell, row by row: 0 red, 1 green, 2 blue
};

const std::array<Layout, 4> kMosaics{{
    {ColorFormat::RGGB, IMAGE_FORMAT::BAYER_RGGB, {0, 1, 1, 2}},
    {ColorFormat::GRBG, IMAGE_FORMAT::BAYER_GRBG, {1, 0, 2, 1}},
    {ColorFormat::GBRG, IMAGE_FORMAT::BAYER_GBRG, {1, 2, 0, 1}},
    {ColorFormat::BGGR, IMAGE_FORMAT::BAYER_BGGR, {2, 1, 1, 0}},
}};

/// Cameras with a small sensor without noise, on which the brightest light exactly fills a pixel.
class OrvexImageTest : public TestSupport::SoftwareDeviceFixture {
protected:
    static Camera& openSmall(ColorFormat colorFormat, const Scene& scene, unsigned bitDepth, bool bigEndian = false) {
        DeviceDescription description = SoftwareDevices::defaultDevices()[colorFormat == ColorFormat::MONO ? 1 : 0];
        description.sensorWidth = kWidth;
        description.sensorHeight = kHeight;
        description.unitWidth = description.unitHeight = 2;
        description.colorFormat = colorFormat;
        description.bitDepth = bitDepth;
        description.bigEndian = bigEndian;
        description.noise = 0;
        description.sampling = SoftwareDevices::SamplingCapability{false, {2, 4}, {2, 3}};
        Camera::unitialisedWorkpace(); // the previous camera has the same serial number
        Camera& camera = open(description);
        SoftwareDevices::presentScene(description.serial, scene);
        SoftwareDevices::setAsFastAsAsked(description.serial, true);
        return camera;
    }
};

/// The sample of a light: the upper eight bits of the sensor's in 8-bit data, all bits in 16-bit data.
double sampleOf(double light, unsigned bitDepth, bool wide) {
    const double sample = light / 255 * ((1U << bitDepth) - 1);
    return wide ? sample : std::floor(sample / (1U << (bitDepth - 8)));
}

TEST_F(OrvexImageTest, EachSampleIsThatOfItsPlaceInTheScene) {
    struct Case {
        unsigned bitDepth;
        bool bigEndian;
        const char* pixelFormat;
        std::array<unsigned, 4> region; ///< x offset, y offset, width, height
        const char* sampling;
        unsigned factorX, factorY;
        bool bins;
    };
    const std::vector<Case> cases{
        {12, false, "8", {0, 0, 24, 16}, "None (1x1)", 1, 1, false},
        {12, false, "16", {0, 0, 24, 16}, "None (1x1)", 1, 1, false},
        {10, true, "16", {6, 4, 12, 10}, "None (1x1)", 1, 1, false},
        {14, true, "16", {0, 0, 24, 16}, "None (1x1)", 1, 1, false},
        {8, true, "16", {2, 2, 22, 14}, "None (1x1)", 1, 1, false},
        {12, false, "16", {4, 0, 16, 16}, "Binning (2x2)", 2, 2, true},
        {10, false, "8", {0, 4, 24, 12}, "Binning (3x2)", 3, 2, true},
        {14, true, "16", {8, 0, 16, 16}, "Subsampling (2x2)", 2, 2, false},
        {8, false, "8", {0, 0, 24, 16}, "Subsampling (4x2)", 4, 2, false},
    };
    std::vector<Layout> layouts(kMosaics.begin(), kMosaics.end());
    layouts.push_back({ColorFormat::MONO, IMAGE_FORMAT::MONO, {}});
    for (const auto& [colorFormat, imageFormat, colors] : layouts) {
        const bool mono = imageFormat == IMAGE_FORMAT::MONO;
        const unsigned period = mono ? 1 : 2; // the distance of pixels of one colour
        for (const Case& row : cases) {
            Camera& camera = openSmall(colorFormat, sceneOf(rampAt), row.bitDepth, row.bigEndian);
            set(camera, "Pixel Format", row.pixelFormat);
            set(camera, "X Offset", std::to_string(row.region[0]));
            set(camera, "Y Offset", std::to_string(row.region[1]));
            setRegion(camera, row.region[2], row.region[3]);
            set(camera, "Sampling Description", row.sampling);
            const bool wide = row.pixelFormat == std::string("16");
            for (const char* mode : {"Video", "Still"}) {
                set(camera, "Streaming Mode", mode);
                const auto image = camera.getImage();
                SCOPED_TRACE(value(camera, "Color Format") + " " + mode + " " + row.pixelFormat + " bits of " +
                             std::to_string(row.bitDepth) + ", " + row.sampling);
                EXPECT_EQ(image->getFormat(), imageFormat);
                EXPECT_EQ(image->getBitDepth(), wide ? 16U : 8U);
                EXPECT_EQ(image->isLittleEndian(), !row.bigEndian);
                ASSERT_EQ(image->getWidth(), row.region[2] / row.factorX / period * period);
                ASSERT_EQ(image->getHeight(), row.region[3] / row.factorY / period * period);
                const auto place = [&](unsigned offset, unsigned i, unsigned factor) {
                    const double middle = row.bins ? (factor - 1) * period / 2.0 : 0;
                    return offset + i / period * period * factor + i % period + middle;
                };
                for (unsigned i = 0; i < image->getWidth() * image->getHeight(); ++i) {
                    const unsigned x = i % image->getWidth();
                    const unsigned y = i / image->getWidth();
                    const Rgb light =
                        rampAt(place(row.region[0], x, row.factorX), place(row.region[1], y, row.factorY));
                    const Imaging::Pixel pixel = image->getPixel(y, x);
                    const int color = mono ? 0 : colors[y % 2 * 2 + x % 2];
                    const std::array<double, 3> samples{pixel.channel[Raw::RED],
                                                        pixel.channel[Raw::GREEN_1] + pixel.channel[Raw::GREEN_2],
                                                        pixel.channel[Raw::BLUE]};
                    const double expected =
                        mono ? 0.299 * light[0] + 0.587 * light[1] + 0.114 * light[2] : light[color];
                    ASSERT_NEAR(samples[color], sampleOf(expected, row.bitDepth, wide), 1) << x << ", " << y;
                    ASSERT_EQ(samples[0] + samples[1] + samples[2], samples[color]) << x << ", " << y;
                }
            }
        }
    }
}

TEST_F(OrvexImageTest, AMosaicBecomesTheColorsOfTheScene) {
    for (const Layout& layout : kMosaics) {
        for (const auto& [bitDepth, pixelFormat, bigEndian] : std::vector<std::tuple<unsigned, const char*, bool>>{
                 {8, "8", false}, {12, "16", false}, {14, "16", true}}) {
            Camera& camera = openSmall(layout.colorFormat, sceneOf(quadrantAt), bitDepth, bigEndian);
            set(camera, "Pixel Format", pixelFormat);
            const auto mosaic = camera.getImage();
            for (const char* method : {"Simple", "Fast", "High Quality", "Higher Quality"}) {
                set(camera, "Demosaic Method", method);
                for (const IMAGE_FORMAT format :
                     {IMAGE_FORMAT::BGR, IMAGE_FORMAT::BGRA, IMAGE_FORMAT::RGB, IMAGE_FORMAT::MONO}) {
                    const auto image = camera.convertImage(mosaic, format);
                    SCOPED_TRACE(value(camera, "Color Format") + " " + pixelFormat + " " + method);
                    ASSERT_EQ(image->getFormat(), format);
                    for (unsigned i = 0; i < kWidth * kHeight; ++i) {
                        const unsigned x = i % kWidth;
                        const unsigned y = i / kWidth;
                        // At the border of two quadrants, a pixel takes colours from its neighbours.
                        if ((x + 1) / 2 == kWidth / 4 || (y + 1) / 2 == kHeight / 4) {
                            continue;
                        }
                        const Rgb light = quadrantAt(x, y);
                        // As the camera computes it.
                        const double grey = (77 * light[0] + 150 * light[1] + 29 * light[2]) / 256;
                        const bool mono = format == IMAGE_FORMAT::MONO;
                        for (int color = 0; color < (mono ? 1 : 3); ++color) {
                            ASSERT_NEAR(image->getPixel(y, x).channel[color],
                                        sampleOf(mono ? grey : light[color], bitDepth, true), 1)
                                << x << ", " << y << " color " << color;
                        }
                    }
                }
            }
        }
    }
}

TEST_F(OrvexImageTest, ColorsComputedInTheCameraArriveWhole) {
    Camera& camera = openSmall(ColorFormat::RGGB, {1, 1, {200, 100, 50}}, 8);
    for (const auto& [pixelFormat, last] : std::vector<std::pair<const char*, std::vector<unsigned char>>>{
             {"24", {50, 100, 200}}, {"32", {50, 100, 200, 255}}, {"48", {50, 0, 100, 0, 200, 0}}}) {
        set(camera, "Pixel Format", pixelFormat);
        const auto data = camera.getImage()->getData();
        ASSERT_EQ(data.size(), kWidth * kHeight * last.size());
        EXPECT_EQ(std::vector<unsigned char>(data.end() - static_cast<std::ptrdiff_t>(last.size()), data.end()), last);
    }
}

TEST_F(OrvexImageTest, ALongerExposureIsBrighterInProportionUntilItSaturates) {
    for (const auto& [bitDepth, pixelFormat] :
         std::vector<std::pair<unsigned, const char*>>{{12, "8"}, {8, "16"}, {10, "16"}, {12, "16"}}) {
        Camera& camera = openSmall(ColorFormat::MONO, {1, 1, {51, 51, 51}}, bitDepth);
        set(camera, "Pixel Format", pixelFormat);
        for (const char* mode : {"Video", "Still"}) {
            set(camera, "Streaming Mode", mode);
            // 10 ms saturate the brightest light; this scene has a fifth of it.
            for (const double exposureMs : {1, 2, 5, 10, 40, 49, 51, 1000}) {
                set(camera, "Exposure", std::to_string(static_cast<int>(exposureMs)));
                const double light = std::min(51 * exposureMs / 10, 255.0);
                EXPECT_NEAR(camera.getImage()->getPixel(3, 5).channel[0],
                            sampleOf(light, bitDepth, pixelFormat == std::string("16")), 1)
                    << mode << " " << exposureMs << " ms, " << pixelFormat << " bits of " << bitDepth;
            }
        }
    }
}

} // namespace
