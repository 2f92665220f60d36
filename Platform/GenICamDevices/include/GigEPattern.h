// SPDX-License-Identifier: Apache-2.0
#pragma once

/**
 * @file
 * The image of the camera in software, as a formula: a test can compute every sample of a frame that it received.
 *
 * A ramp of 1024 steps lies over the sensor. At column x and row y of frame n, whose number is its block id, the step
 * is (start + stepX * X + stepY * y' + stepFrame * n) mod 1024 with X = offsetX + x, or sensorWidth - 1 - (offsetX + x)
 * if the image is mirrored, and y' = offsetY + y; see kRamps. Red sees this step, as grey does, green the one 341
 * further, blue the one 682 further. A step is 64 units of light; light becomes a sample in two steps:
 *
 * - brightness = light * exposureTime / 10000 us * 10 ^ (gain / 20), at most 65535
 * - sample = 65535 * (brightness / 65535) ^ gamma + 256 * blackLevel, at most 65535
 *
 * Here, gain is that of all colours and, for red and blue, their own in addition. A sample of fewer bits is the high
 * bits of this one. The colour of a mosaic's pixel depends on its place in the image, not on that on the sensor.
 */

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "GigEPixelFormat.h"

namespace GenICamDevices {

/// Values of the feature TestPattern.
enum class TestPattern : std::uint32_t { Off, HorizontalRamp, VerticalRamp, MovingDiagonalRamp };

/// A pattern that rises by a number of steps per column, row and frame, up to kRampLength, and starts again.
struct Ramp {
    std::uint32_t start;
    std::uint32_t stepX;
    std::uint32_t stepY;
    std::uint32_t stepFrame;
};

inline constexpr std::uint32_t kRampLength = 1024;
/// By test pattern.
inline constexpr std::array kRamps{Ramp{512, 0, 0, 0}, Ramp{0, 1, 0, 0}, Ramp{0, 0, 2, 0}, Ramp{0, 1, 2, 4}};

/// What a frame shows.
struct Picture {
    TestPattern pattern = TestPattern::MovingDiagonalRamp;
    std::uint32_t sensorWidth = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    bool reverseX = false;
    double exposureTime = 10000; ///< microseconds
    std::array<float, 3> gain{}; ///< decibels: all, red, blue
    float blackLevel = 0;        ///< parts of 256
    float gamma = 1;
};

inline bool operator==(const Picture& a, const Picture& b) {
    return a.pattern == b.pattern && a.sensorWidth == b.sensorWidth && a.offsetX == b.offsetX &&
           a.offsetY == b.offsetY && a.reverseX == b.reverseX && a.exposureTime == b.exposureTime && a.gain == b.gain &&
           a.blackLevel == b.blackLevel && a.gamma == b.gamma;
}

/// The colour that a sample measures.
enum class SampleColor : std::uint32_t { Grey, Red, Green, Blue };

inline constexpr std::uint32_t kSampleColorCount = 4;

inline SampleColor mosaicColorAt(std::uint32_t x, std::uint32_t y) {
    constexpr SampleColor kCell[2][2] = {{SampleColor::Red, SampleColor::Green},
                                         {SampleColor::Green, SampleColor::Blue}};
    return kCell[y % 2][x % 2];
}

/// Step of the ramp at the left end of a row, without the part that depends on the column.
inline std::uint32_t rowStep(const Picture& picture, std::uint32_t blockId, std::uint32_t y) {
    const Ramp& ramp = kRamps[static_cast<std::size_t>(picture.pattern)];
    return (ramp.start + ramp.stepY * (picture.offsetY + y) + ramp.stepFrame * blockId) % kRampLength;
}

/// The part that depends on the column.
inline std::uint32_t columnStep(const Picture& picture, std::uint32_t x) {
    const std::uint32_t column =
        picture.reverseX ? picture.sensorWidth - 1 - (picture.offsetX + x) : picture.offsetX + x;
    return kRamps[static_cast<std::size_t>(picture.pattern)].stepX * column % kRampLength;
}

/// @return 16 bits
inline std::uint32_t sampleAtStep(const Picture& picture, SampleColor color, std::uint32_t step) {
    constexpr std::array<std::uint32_t, kSampleColorCount> kAhead{0, 0, 341, 682};
    const double light = (step + kAhead[static_cast<std::size_t>(color)]) % kRampLength * 64.0;
    float gain = picture.gain[0];
    if (color == SampleColor::Red) {
        gain += picture.gain[1];
    } else if (color == SampleColor::Blue) {
        gain += picture.gain[2];
    }
    double sample = std::min(65535.0, light * picture.exposureTime / 10000.0 * std::pow(10.0, gain / 20.0));
    if (picture.gamma != 1.0f) {
        sample = 65535.0 * std::pow(sample / 65535.0, picture.gamma);
    }
    return static_cast<std::uint32_t>(std::min(65535.0, sample + 256.0 * picture.blackLevel));
}

/// One sample of a frame. For formats with several samples per pixel, the colour selects one.
/// @return as many bits as the format's samples have
inline std::uint32_t sampleAt(const Picture& picture, const PixelFormat& format, std::uint32_t blockId, std::uint32_t x,
                              std::uint32_t y, SampleColor color) {
    const std::uint32_t step = (rowStep(picture, blockId, y) + columnStep(picture, x)) % kRampLength;
    return sampleAtStep(picture, color, step) >> (16 - format.sampleBits);
}

/// Y, U and V of a colour of 8 bits each; U and V of two pixels are those of the first one.
inline std::array<std::uint8_t, 3> yuvOf(int red, int green, int blue) {
    return {static_cast<std::uint8_t>((77 * red + 150 * green + 29 * blue) / 256),
            static_cast<std::uint8_t>((-43 * red - 85 * green + 128 * blue + 128 * 256) / 256),
            static_cast<std::uint8_t>((128 * red - 107 * green - 21 * blue + 128 * 256) / 256)};
}

} // namespace GenICamDevices
