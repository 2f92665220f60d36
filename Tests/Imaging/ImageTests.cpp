// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Image.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "Imaging/Color.h"
#include "Imaging/Mono.h"
#include "Imaging/PlanarColor.h"
#include "Imaging/Raw.h"
#include "Support/Images.h"
#include "Support/Throws.h"

namespace {

using namespace Imaging;
using TestSupport::allFormats;
using TestSupport::expectStandard;
using TestSupport::patternImage;
using Bytes = std::vector<unsigned char>;

std::vector<double> channels(const Image& image, unsigned row, unsigned column) {
    const Pixel pixel = image.getPixel(row, column);
    return {std::begin(pixel.channel), std::end(pixel.channel)};
}

/// Geometry of a 3 x 2 image by format, for one byte per channel.
struct Geometry {
    IMAGE_FORMAT format;
    unsigned channels;
    unsigned planes;
    unsigned bytesPerPixel;
    unsigned stride;
    unsigned planeStride;
};

TEST(Image, GeometryFollowsFromTheFormat) {
    const std::vector<Geometry> cases{
        {IMAGE_FORMAT::MONO, 1, 1, 1, 3, 6},       {IMAGE_FORMAT::BAYER_GBRG, 4, 1, 1, 3, 6},
        {IMAGE_FORMAT::RGB, 3, 1, 3, 9, 18},       {IMAGE_FORMAT::BGRA, 4, 1, 4, 12, 24},
        {IMAGE_FORMAT::BGR_PLANAR, 3, 3, 3, 3, 6}, {IMAGE_FORMAT::RGBA_PLANAR, 4, 4, 4, 3, 6},
    };
    for (const Geometry& row : cases) {
        for (const unsigned depth : {8U, 12U}) {
            const unsigned bytes = depth == 8 ? 1 : 2;
            const auto image = createImage(3, 2, {}, depth, true, row.format);
            SCOPED_TRACE(getFormatName(row.format));
            EXPECT_EQ(image->getFormat(), row.format);
            EXPECT_EQ(image->getNumberOfChannels(), row.channels);
            EXPECT_EQ(image->getNumberOfPlanes(), row.planes);
            EXPECT_EQ(image->getBytesPerPixel(), row.bytesPerPixel * bytes);
            EXPECT_EQ(image->getStride(), row.stride * bytes);
            EXPECT_EQ(image->getPlaneStride(), row.planeStride * bytes);
            EXPECT_EQ(image->getImageSize(), 6ULL * row.bytesPerPixel * bytes);
            EXPECT_EQ(image->getData(), Bytes(image->getImageSize(), 0)) << "missing data is zeros";
        }
    }
    EXPECT_EQ(createImage(1, 1, {}, 9, true, IMAGE_FORMAT::MONO)->getBytesPerChannel(), 2U);
    EXPECT_EQ(createImage(1, 1, {}, 24, true, IMAGE_FORMAT::MONO)->getBytesPerChannel(), 3U);
    EXPECT_EQ(createImage(2, 1, {1, 2, 3}, 8, true, IMAGE_FORMAT::MONO)->getData(), (Bytes{1, 2}));
}

TEST(Image, PixelsAreReadInTheirChannels) {
    const std::pair<IMAGE_FORMAT, std::array<std::size_t, 4>> mosaics[] = {{IMAGE_FORMAT::BAYER_RGGB, {0, 1, 2, 3}},
                                                                           {IMAGE_FORMAT::BAYER_GRBG, {1, 0, 3, 2}},
                                                                           {IMAGE_FORMAT::BAYER_GBRG, {1, 3, 0, 2}},
                                                                           {IMAGE_FORMAT::BAYER_BGGR, {3, 1, 2, 0}}};
    for (const auto& [format, channelOf] : mosaics) {
        const auto mosaic = createImage(2, 2, {10, 20, 30, 40}, 8, true, format);
        for (unsigned k = 0; k < 4; ++k) {
            std::vector<double> expected(4);
            expected[channelOf[k]] = 10 * (k + 1);
            EXPECT_EQ(channels(*mosaic, k / 2, k % 2), expected) << getFormatName(format);
        }
    }
    const auto bgr = createImage(1, 1, {1, 2, 3}, 8, true, IMAGE_FORMAT::BGR);
    EXPECT_EQ(channels(*bgr, 0, 0), (std::vector<double>{3, 2, 1, 0}));
    const auto planar = createImage(2, 1, {1, 2, 3, 4, 5, 6, 7, 8}, 8, true, IMAGE_FORMAT::BGRA_PLANAR);
    EXPECT_EQ(channels(*planar, 0, 1), (std::vector<double>{6, 4, 2, 8}));
    const auto bigEndian = createImage(1, 1, {1, 2}, 16, false, IMAGE_FORMAT::MONO);
    EXPECT_EQ(channels(*bigEndian, 0, 0)[0], 258.0);
    EXPECT_EQ(channels(*createImage(1, 1, {1, 2, 3}, 24, true, IMAGE_FORMAT::MONO), 0, 0)[0], 0.0);
}

TEST(Image, SettingPixelsIsTheInverseOfReadingThem) {
    for (const IMAGE_FORMAT format : allFormats()) {
        for (const unsigned depth : {8U, 12U}) {
            for (const bool littleEndian : {true, false}) {
                const auto source = patternImage(5, 3, depth, format, littleEndian);
                const auto copy = createImage(5, 3, {}, depth, littleEndian, format);
                for (unsigned row = 0; row < 3; ++row) {
                    for (unsigned column = 0; column < 5; ++column) {
                        copy->setPixel(row, column, source->getPixel(row, column));
                    }
                }
                EXPECT_EQ(copy->getData(), source->getData()) << getFormatName(format) << " " << depth;
            }
        }
    }
}

TEST(Image, StoredValuesAreTruncatedNotClamped) {
    const auto image = createImage(1, 1, {}, 8, true, IMAGE_FORMAT::MONO);
    const std::vector<std::pair<double, int>> cases{{300.7, 44}, {256.0, 0},   {-1.0, 255},
                                                    {-0.9, 0},   {1.0e300, 0}, {std::nan(""), 0}};
    for (const auto& [value, stored] : cases) {
        image->setPixel(0, 0, Pixel{{value, 9, 9, 9}});
        EXPECT_EQ(image->getData()[0], stored) << value;
    }
}

TEST(Image, FailuresAreStandardExceptions) {
    expectStandard<std::invalid_argument>([] { createImage(0, 0, {}, 8, true, IMAGE_FORMAT::MONO); },
                                          "Image width cannot be 0.");
    expectStandard<std::invalid_argument>([] { createImage(1, 0, {}, 8, true, IMAGE_FORMAT::RGB); },
                                          "Image height cannot be 0.");
    expectStandard<std::runtime_error>([] { createImage(1, 1, {}, 8, true, static_cast<IMAGE_FORMAT>(13)); },
                                       "Invalid image format.");
    expectStandard<std::invalid_argument>([] { cloneImage(nullptr); }, "Image cannot be null.");
    const auto image = patternImage(3, 2, 8, IMAGE_FORMAT::RGB, true);
    EXPECT_NO_THROW(image->getPixel(1, 2));
    for (const auto& [row, column] : std::vector<std::pair<unsigned, unsigned>>{{2, 0}, {0, 3}, {~0U, ~0U}}) {
        expectStandard<std::invalid_argument>([&, r = row, c = column] { image->getPixel(r, c); },
                                              "Pixel location is out of image bounds.");
        expectStandard<std::invalid_argument>([&, r = row, c = column] { image->setPixel(r, c, {}); },
                                              "Pixel location is out of image bounds.");
    }
    const auto lengthError = [] { createImage(~0U, ~0U, {}, 16, true, IMAGE_FORMAT::RGBA); };
    EXPECT_THROW(lengthError(), std::exception) << "dimensions beyond memory";
}

TEST(Image, AClassRefusesTheFormatsOfOthers) {
    const Raw raw(2, 2, {}, 12, true, IMAGE_FORMAT::MONO, 4, 1);
    const Color color(2, 2, {}, 12, true, IMAGE_FORMAT::RGB_PLANAR, 3, 1);
    const PlanarColor planar(2, 2, {}, 12, true, IMAGE_FORMAT::RGB, 3, 3);
    for (const Image* image :
         {static_cast<const Image*>(&raw), static_cast<const Image*>(&color), static_cast<const Image*>(&planar)}) {
        expectStandard<std::runtime_error>([&] { image->getPixel(0, 0); }, "Invalid image format.");
        expectStandard<std::runtime_error>([&] { image->get8bitImageData(); }, "Invalid image format.");
        expectStandard<std::runtime_error>([&] { image->get16bitImageData(); }, "Invalid image format.");
    }
    const Color narrow(2, 2, {1, 2, 3, 4}, 8, true, IMAGE_FORMAT::RGB, 1, 1);
    EXPECT_EQ(channels(narrow, 1, 1), (std::vector<double>{4, 0, 0, 0})) << "never reads past its samples";
}

TEST(Image, ClonesAreIndependentAndMovedFromImagesHaveNoPixels) {
    const auto image = patternImage(4, 4, 12, IMAGE_FORMAT::BGRA, false);
    const auto clone = cloneImage(image);
    EXPECT_EQ(clone->getData(), image->getData());
    EXPECT_FALSE(clone->isLittleEndian());
    clone->setPixel(0, 0, Pixel{{1, 2, 3, 4}});
    EXPECT_NE(clone->getData(), image->getData());
    Mono source(2, 2, {1, 2, 3, 4}, 8, true);
    const Mono target(std::move(source));
    EXPECT_EQ(target.getData(), (Bytes{1, 2, 3, 4}));
    expectStandard<std::invalid_argument>([&] { source.getPixel(0, 0); }, "Pixel location is out of image bounds.");
}

/// The exports by their definition, pixel by pixel.
std::vector<double> exportModel(const Image& image) {
    std::vector<double> values;
    for (unsigned row = 0; row < image.getHeight(); ++row) {
        for (unsigned column = 0; column < image.getWidth(); ++column) {
            const Pixel pixel = image.getPixel(row, column);
            if (image.getNumberOfChannels() == 1) {
                values.push_back(pixel.channel[0]);
            } else {
                values.insert(values.end(), {pixel.channel[2], pixel.channel[1], pixel.channel[0]});
            }
        }
    }
    return values;
}

Bytes scaledModel(const Image& image) {
    const std::vector<double> values = exportModel(image);
    const double largest = std::max(0.0, *std::max_element(values.begin(), values.end()));
    Bytes bytes;
    for (const double value : values) {
        bytes.push_back(largest == 0 ? 0 : static_cast<unsigned char>(std::floor(value * 255 / largest + 0.5)));
    }
    return bytes;
}

TEST(ImageExport, EqualsThePerPixelModelForEveryFormat) {
    for (const IMAGE_FORMAT format : allFormats()) {
        for (const unsigned depth : {5U, 10U, 12U, 16U, 24U}) {
            for (const bool littleEndian : {true, false}) {
                // Wide enough for several bands of rows, of odd size.
                const auto image = patternImage(129, 67, depth, format, littleEndian);
                SCOPED_TRACE(getFormatName(format) + " at " + std::to_string(depth));
                EXPECT_EQ(image->get8bitImageData(), scaledModel(*image));
                const std::vector<double> values = exportModel(*image);
                EXPECT_EQ(image->get16bitImageData(), std::vector<unsigned short>(values.begin(), values.end()));
            }
        }
        const auto bytes = patternImage(5, 3, 8, format, true);
        EXPECT_EQ(bytes->get8bitImageData(), bytes->getData());
        EXPECT_TRUE(bytes->get16bitImageData().empty());
        EXPECT_EQ(createImage(3, 3, {}, 12, true, format)->get8bitImageData(),
                  Bytes(format == IMAGE_FORMAT::MONO ? 9 : 27, 0));
    }
}

TEST(ImageExport, HalvesGoUp) {
    const auto mono = createImage(2, 1, {0x00, 0x08, 0x00, 0x04}, 12, true, IMAGE_FORMAT::MONO);
    EXPECT_EQ(mono->get8bitImageData(), (Bytes{255, 128}));
    const auto rgb = createImage(1, 1, {100, 0, 200, 0, 50, 0}, 16, true, IMAGE_FORMAT::RGB);
    EXPECT_EQ(rgb->get8bitImageData(), (Bytes{64, 255, 128}));
    // All largest samples at which the calculation changes, compared with the definition.
    for (const unsigned largest : {1U, 2U, 254U, 255U, 256U, 509U, 510U, 511U, 4095U, 16383U, 16384U, 65534U, 65535U}) {
        Bytes ramp;
        for (unsigned value = 0; value <= largest; ++value) {
            ramp.push_back(static_cast<unsigned char>(value));
            ramp.push_back(static_cast<unsigned char>(value >> 8));
        }
        const auto image = createImage(largest + 1, 1, ramp, 16, true, IMAGE_FORMAT::MONO);
        EXPECT_EQ(image->get8bitImageData(), scaledModel(*image)) << largest;
    }
}

} // namespace
