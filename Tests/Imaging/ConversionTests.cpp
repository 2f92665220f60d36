// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Conversion.h"

#include <atomic>
#include <chrono>
#include <map>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "Imaging/BayerKernel.h"
#include "Imaging/BufferPool.h"
#include "Imaging/RowBands.h"
#include "Imaging/SampleLoops.h"
#include "Support/Images.h"
#include "Support/ProcessFigures.h"
#include "Support/Throws.h"

namespace {

using namespace Imaging;
using TestSupport::allFormats;
using TestSupport::expectStandard;
using TestSupport::kindsOfVectors;
using TestSupport::patternImage;
using Bytes = std::vector<unsigned char>;
using F = IMAGE_FORMAT;
using Pair = std::pair<F, F>;

const char* const kImpossible = "Conversion between selected formats is not possible.";

// --- The reference: one OpenCV call per step, through intermediate formats ---

bool isBayer(F format) {
    return format >= F::BAYER_RGGB && format <= F::BAYER_BGGR;
}

bool isPlanar(F format) {
    return format >= F::RGB_PLANAR;
}

F interleavedOf(F planar) {
    return static_cast<F>(static_cast<int>(planar) - 4);
}

std::vector<F> intermediates(F from, F to) {
    // From a mosaic through BGR, from planes through their own interleaved order, to planes through theirs.
    std::vector<F> route{from};
    if (isBayer(from) && to != F::MONO) {
        route.push_back(F::BGR);
    } else if (isPlanar(from)) {
        route.push_back(interleavedOf(from));
    }
    if (isPlanar(to)) {
        route.push_back(interleavedOf(to));
    }
    std::vector<F> result;
    for (const F format : route) {
        if (format != from && format != to && (result.empty() || result.back() != format)) {
            result.push_back(format);
        }
    }
    return result;
}

int colorCode(F from, F to) {
    static const std::map<Pair, int> codes{
        {{F::MONO, F::RGB}, 8},         {{F::MONO, F::RGBA}, 9},        {{F::MONO, F::BGR}, 8},
        {{F::MONO, F::BGRA}, 9},        {{F::BAYER_RGGB, F::MONO}, 86}, {{F::BAYER_RGGB, F::BGR}, 46},
        {{F::BAYER_GRBG, F::MONO}, 87}, {{F::BAYER_GRBG, F::BGR}, 47},  {{F::BAYER_GBRG, F::MONO}, 89},
        {{F::BAYER_GBRG, F::BGR}, 49},  {{F::BAYER_BGGR, F::MONO}, 88}, {{F::BAYER_BGGR, F::BGR}, 48},
        {{F::RGB, F::MONO}, 7},         {{F::RGB, F::RGBA}, 0},         {{F::RGB, F::BGR}, 4},
        {{F::RGB, F::BGRA}, 2},         {{F::RGBA, F::MONO}, 11},       {{F::RGBA, F::RGB}, 1},
        {{F::RGBA, F::BGR}, 3},         {{F::RGBA, F::BGRA}, 5},        {{F::BGR, F::MONO}, 6},
        {{F::BGR, F::RGB}, 4},          {{F::BGR, F::RGBA}, 2},         {{F::BGR, F::BGRA}, 0},
        {{F::BGRA, F::MONO}, 10},       {{F::BGRA, F::RGB}, 3},         {{F::BGRA, F::RGBA}, 5},
        {{F::BGRA, F::BGR}, 1},
    };
    return codes.at({from, to});
}

int channelsOf(F format) {
    if (format == F::MONO || isBayer(format)) {
        return 1;
    }
    const F order = isPlanar(format) ? interleavedOf(format) : format;
    return order == F::RGBA || order == F::BGRA ? 4 : 3;
}

Bytes bytesOf(const cv::Mat& matrix) {
    return {matrix.datastart, matrix.dataend};
}

Bytes swapped(Bytes bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
    return bytes;
}

Bytes referenceStep(Bytes bytes, int width, int height, int depth, F from, F to) {
    const cv::Mat input(height, width, CV_MAKETYPE(depth, channelsOf(from)), bytes.data());
    cv::Mat output;
    if (isPlanar(to)) {
        std::vector<cv::Mat> planes;
        cv::split(input, planes);
        cv::vconcat(planes, output);
    } else if (isPlanar(from)) {
        const cv::Mat stack = input.reshape(1, channelsOf(from) * height);
        std::vector<cv::Mat> planes;
        for (int k = 0; k < channelsOf(from); ++k) {
            planes.push_back(stack(cv::Rect(0, k * height, width, height)));
        }
        cv::merge(planes, output);
    } else {
        output.create(height, width, CV_MAKETYPE(depth, channelsOf(to)));
        cv::cvtColor(input, output, colorCode(from, to));
    }
    return bytesOf(output);
}

Bytes referenceConversion(const Image& image, F to) {
    const F from = image.getFormat();
    std::vector<F> route = intermediates(from, to);
    route.push_back(to);
    // Only computations need samples in machine order; the machine of the tests is little-endian.
    const bool swap = !image.isLittleEndian() && image.getBytesPerChannel() == 2 && (isBayer(from) || to == F::MONO);
    Bytes bytes = swap ? swapped(image.getData()) : image.getData();
    F current = from;
    for (const F next : route) {
        bytes = referenceStep(bytes, static_cast<int>(image.getWidth()), static_cast<int>(image.getHeight()),
                              image.getBytesPerChannel() == 1 ? CV_8U : CV_16U, current, next);
        current = next;
    }
    return swap ? swapped(bytes) : bytes;
}

TEST(Conversion, EveryPairEqualsTheStepByStepChain) {
    int conversions = 0;
    for (const auto& [width, height] :
         std::vector<std::pair<unsigned, unsigned>>{{1, 1}, {2, 2}, {3, 2}, {2, 5}, {3, 3}, {64, 48}, {333, 127}}) {
        for (const unsigned depth : {8U, 12U, 16U}) {
            for (const bool littleEndian : {true, false}) {
                for (const F from : allFormats()) {
                    const auto image = patternImage(width, height, depth, from, littleEndian);
                    const Bytes before = image->getData();
                    for (const F to : allFormats()) {
                        if (!conversionExists(from, to)) {
                            continue;
                        }
                        ++conversions;
                        const auto result = convertImage(image, to);
                        ASSERT_EQ(result->getData(), referenceConversion(*image, to))
                            << getFormatName(from) << " to " << getFormatName(to) << ", " << width << " x " << height
                            << ", " << depth << " bits, " << (littleEndian ? "little" : "big") << "-endian";
                        EXPECT_EQ(result->getFormat(), to);
                        EXPECT_EQ(result->getBitDepth(), depth);
                        EXPECT_EQ(result->isLittleEndian(), littleEndian);
                    }
                    ASSERT_EQ(image->getData(), before) << "the source is never changed";
                }
            }
        }
    }
    EXPECT_EQ(conversions, 7 * 3 * 2 * 108);
}

PixelView viewOf(Image& image) {
    const FormatDescription& format = describe(image.getFormat());
    const int depth = image.getBytesPerChannel() == 1 ? CV_8U : CV_16U;
    const auto width = static_cast<int>(image.getWidth());
    const auto height = static_cast<int>(image.getHeight());
    const auto planeBytes = static_cast<std::size_t>(image.getImageSize()) / format.samplesPerPixel();
    return {image.getDataAddress(), width, height, depth, planeBytes, format};
}

TEST(BayerKernel, EqualsOpenCvWithEitherKindOfVectors) {
    std::vector<std::pair<unsigned, unsigned>> sizes{{64, 64}, {333, 127}, {4097, 5}, {4099, 3}};
    for (unsigned width = 4; width <= 9; ++width) {
        for (unsigned height = 3; height <= 9; ++height) {
            sizes.emplace_back(width, height);
        }
    }
    for (unsigned width = 15; width <= 67; ++width) {
        sizes.emplace_back(width, 5); // every remainder of every vector
    }
    for (const auto& [width, height] : sizes) {
        for (const unsigned depth : {8U, 16U}) {
            for (const F from : {F::BAYER_RGGB, F::BAYER_GRBG, F::BAYER_GBRG, F::BAYER_BGGR}) {
                const auto image = patternImage(width, height, depth, from, true);
                // Neighbours of the largest and the smallest sample, where sums carry.
                std::fill_n(image->getDataAddress(), image->getImageSize() / 3, static_cast<unsigned char>(0xFF));
                for (const F to : {F::MONO, F::RGB, F::BGRA, F::BGR_PLANAR, F::RGBA_PLANAR}) {
                    const Bytes expected = referenceConversion(*image, to);
                    for (const Vectors vectors : kindsOfVectors()) {
                        if (depth == 8 && to == F::MONO && vectors != Vectors::Wide) {
                            continue; // left to OpenCV
                        }
                        const auto result = createImage(width, height, Bytes(expected.size(), 0xFF), depth, true, to);
                        demosaic(viewOf(*image), viewOf(*result), vectors);
                        ASSERT_TRUE(result->getData() == expected)
                            << getFormatName(from) << " to " << getFormatName(to) << ", " << width << " x " << height
                            << ", " << depth << " bits, " << (vectors == Vectors::Wide ? "wide" : "portable");
                    }
                }
            }
        }
    }
}

TEST(Conversion, LargeImagesAreConvertedInBands) {
    const std::pair<F, F> pairs[] = {{F::MONO, F::RGBA_PLANAR},
                                     {F::RGB, F::BGRA_PLANAR},
                                     {F::RGBA, F::RGB_PLANAR},
                                     {F::RGB_PLANAR, F::BGRA},
                                     {F::BGRA_PLANAR, F::RGB},
                                     {F::RGBA_PLANAR, F::MONO},
                                     {F::RGB_PLANAR, F::BGRA_PLANAR},
                                     {F::BAYER_GBRG, F::BGR_PLANAR},
                                     {F::BAYER_RGGB, F::RGB},
                                     {F::BAYER_BGGR, F::BGRA},
                                     {F::BGR, F::RGBA},
                                     {F::MONO, F::BGR},
                                     {F::RGBA, F::MONO}};
    for (const auto& [from, to] : pairs) {
        const auto image = patternImage(1203, 1201, 16, from, true);
        const auto result = convertImage(image, to);
        ASSERT_GT(image->getImageSize() + result->getImageSize(), kLargeBytes);
        EXPECT_TRUE(result->getData() == referenceConversion(*image, to))
            << getFormatName(from) << " to " << getFormatName(to);
    }
}

TEST(Conversion, KeepsNothingForThreadsThatHaveEnded) {
    const auto image = patternImage(64, 48, 8, F::BAYER_BGGR, true);
    const Bytes grey = referenceConversion(*image, F::MONO);
    std::atomic<int> wrong{0};
    const auto convertOnThreads = [&](int threads) {
        for (int i = 0; i < threads; ++i) {
            std::thread([&] {
                wrong += convertImage(convertImage(image, F::BGR), F::RGBA)->getImageSize() == 0 ? 1 : 0;
                wrong += convertImage(image, F::MONO)->getData() == grey ? 0 : 1;
            }).join();
        }
        return TestSupport::allocatedBytes();
    };
    const std::size_t before = convertOnThreads(300);
    EXPECT_LE(convertOnThreads(200), before + 200 * 100);
    EXPECT_EQ(wrong, 0);
}

TEST(SampleLoops, EqualOpenCvWithEitherKindOfVectors) {
    for (unsigned width = 1; width <= 70; ++width) { // every remainder of every vector
        for (const unsigned depth : {8U, 16U}) {
            const std::size_t bytes = depth / 8;
            const auto rgb = patternImage(width, 1, depth, F::RGB, true);
            const auto rgba = patternImage(width, 1, depth, F::RGBA, true);
            const Bytes planes = referenceConversion(*rgba, F::RGBA_PLANAR);
            const auto plane = [&](std::size_t channel) { return planes.data() + channel * width * bytes; };
            for (const Vectors vectors : kindsOfVectors()) {
                SCOPED_TRACE(std::to_string(width) + (vectors == Vectors::Wide ? ", wide" : ", portable"));
                Bytes result(4 * width * bytes);
                interleave({plane(0), plane(1), plane(2), plane(3)}, 4, width, bytes, result.data(), vectors);
                ASSERT_EQ(result, rgba->getData());
                result.resize(3 * width * bytes);
                interleave({plane(0), plane(1), plane(2), nullptr}, 3, width, bytes, result.data(), vectors);
                ASSERT_EQ(result, referenceConversion(*rgba, F::RGB));
                reverseTriples(rgb->getDataAddress(), width, bytes, result.data(), vectors);
                ASSERT_EQ(result, referenceConversion(*rgb, F::BGR));
                result.resize(width * bytes);
                greyOfPlanes(plane(0), plane(1), plane(2), width, bytes, result.data(), vectors);
                ASSERT_EQ(result, referenceConversion(*rgba, F::MONO));
                if (depth == 16) {
                    std::uint16_t largest = 0;
                    for (std::size_t i = 0; i < planes.size(); i += 2) {
                        largest = std::max(largest, static_cast<std::uint16_t>(planes[i] | planes[i + 1] << 8));
                    }
                    ASSERT_EQ(largestSample(planes.data(), planes.size() / 2, vectors), largest);
                }
            }
        }
    }
}

TEST(SampleLoops, ScaleByEveryNumberWithEitherKindOfVectors) {
    std::vector<std::uint16_t> ramp(16384);
    std::iota(ramp.begin(), ramp.end(), std::uint16_t{0});
    Bytes result(ramp.size());
    for (const Vectors vectors : kindsOfVectors()) {
        for (unsigned largest = 256; isDividedByMultiplying(largest); largest += largest < 1000 ? 1 : 61) {
            scaleSamples(reinterpret_cast<const unsigned char*>(ramp.data()), largest + 1, largest, result.data(),
                         vectors);
            unsigned wrong = 0;
            for (unsigned sample = 0; sample <= largest; ++sample) {
                wrong += result[sample] != (510 * sample + largest) / (2 * largest) ? 1 : 0;
            }
            ASSERT_EQ(wrong, 0U) << largest;
        }
    }
}

TEST(Conversion, TheListNamesEveryPairOnce) {
    const auto conversions = getAvailableConversions();
    EXPECT_EQ(conversions.size(), 108U);
    EXPECT_EQ(*conversions.begin(), (std::pair<const unsigned short, std::string>{0x0005, "MONO_TO_RGB"}));
    EXPECT_EQ(*conversions.rbegin(),
              (std::pair<const unsigned short, std::string>{0x0C0B, "BGRA_PLANAR_TO_BGR_PLANAR"}));
    EXPECT_EQ(conversions.at(0x010B), "BAYER_RGGB_TO_BGR_PLANAR");
    for (const F from : allFormats()) {
        EXPECT_EQ(findFormat(getFormatName(from)), from);
        for (const F to : allFormats()) {
            const auto key = static_cast<unsigned short>(static_cast<int>(from) * 256 + static_cast<int>(to));
            EXPECT_EQ(conversions.count(key) == 1, conversionExists(from, to));
            EXPECT_EQ(conversionExists(from, to), from != to && !isBayer(to));
        }
    }
    const auto beyond = static_cast<F>(256 + static_cast<int>(F::RGB)); // a key holds only the low byte
    EXPECT_TRUE(conversionExists(F::MONO, beyond));
    EXPECT_THROW(convertImage(patternImage(3, 3, 8, F::MONO, true), beyond), std::runtime_error);
    EXPECT_FALSE(findFormat("rgb").has_value());
}

TEST(Conversion, ToTheSameFormatIsACopy) {
    const auto image = patternImage(3, 3, 12, F::BAYER_GRBG, true);
    const auto copy = convertImage(image, F::BAYER_GRBG);
    EXPECT_EQ(copy->getData(), image->getData());
    EXPECT_NE(copy->getDataAddress(), image->getDataAddress());
}

TEST(Conversion, WhatCannotBeConvertedIsRefused) {
    const auto convert = [](unsigned depth, F from, F to) {
        return [=] { convertImage(createImage(4, 4, {}, depth, true, from), to); };
    };
    expectStandard<std::runtime_error>(convert(8, F::MONO, F::BAYER_GRBG), kImpossible);
    expectStandard<std::runtime_error>(convert(8, F::BAYER_RGGB, F::BAYER_GRBG), kImpossible);
    expectStandard<std::runtime_error>(convert(8, F::RGB, static_cast<F>(13)), kImpossible);
    expectStandard<std::runtime_error>(convert(24, F::RGB, F::BGR), "Cannot handle greater than 2 bytes per channel.");
    expectStandard<std::invalid_argument>([] { convertImage(nullptr, F::RGB); }, "Image cannot be null.");
    EXPECT_THROW(convert(0, F::RGB, F::BGR)(), cv::Exception);
    auto image = createImage(4, 4, {}, 8, true, F::MONO);
    const auto moved = createImage(4, 4, {}, 8, true, F::MONO);
    EXPECT_NO_THROW(convertImage(moved, F::RGB));
}

TEST(BufferPool, NeverHandsOutABufferTwice) {
    // Eight threads convert images large enough for the pool, hold some and drop them late.
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (unsigned number = 0; number < 8; ++number) {
        threads.emplace_back([number, &wrong] {
            const auto image =
                createImage(300, 301 + number, Bytes(std::size_t{300} * (301 + number), 10 + number), 8, true, F::MONO);
            std::vector<std::unique_ptr<Image>> held;
            for (int round = 0; round < 20; ++round) {
                held.push_back(convertImage(image, round % 2 == 0 ? F::RGB : F::BGR_PLANAR));
                if (held.size() == 4) {
                    held.erase(held.begin());
                }
                for (const auto& result : held) {
                    const Bytes data = result->getData();
                    wrong += data != Bytes(std::size_t{900} * (301 + number), 10 + number) ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    BufferPool& pool = BufferPool::instance();
    EXPECT_EQ(pool.take(70'000).size(), 70'000U);
}

TEST(BufferPool, FreesWhatNobodyTakesForAWhile) {
    using namespace std::chrono_literals;
    BufferPool pool(20ms);
    const auto isEmptyInTime = [&] {
        const auto end = std::chrono::steady_clock::now() + 30s;
        while (pool.keptBytes() != 0 && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(1ms);
        }
        return pool.keptBytes() == 0;
    };
    for (int round = 0; round < 2; ++round) { // in the second round its thread has ended
        pool.giveBack(Bytes(100'000));
        pool.giveBack(Bytes(300'000));
        EXPECT_TRUE(isEmptyInTime()) << "round " << round;
    }
    BufferPool patient(1h);
    Bytes kept(100'000);
    const unsigned char* const address = kept.data();
    patient.giveBack(std::move(kept));
    EXPECT_EQ(patient.keptBytes(), 100'000U);
    EXPECT_EQ(patient.take(90'000).data(), address);
    EXPECT_EQ(patient.keptBytes(), 0U);
}

} // namespace
