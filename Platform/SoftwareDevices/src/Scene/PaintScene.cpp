// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

#include "Scene/SceneSize.h"

// Paints the scene that devices in software see by default, when they are built: that takes too long for every process
// that uses them. A mountain lake in the morning, from noise: sky and clouds, four ranges in the haze, their
// reflection, a meadow in front.

namespace {

constexpr std::uint32_t kWidth = SoftwareDevices::kDefaultSceneWidth;
constexpr std::uint32_t kHeight = SoftwareDevices::kDefaultSceneHeight;
constexpr float kShoreline = 0.67f; // heights are fractions of the picture, from the top
constexpr float kMeadow = 0.86f;

struct Color {
    float red, green, blue;

    Color operator*(float factor) const { return {red * factor, green * factor, blue * factor}; }
    Color operator+(const Color& other) const { return {red + other.red, green + other.green, blue + other.blue}; }
};

constexpr Color kZenith{52, 104, 178};
constexpr Color kHorizon{226, 222, 210};
constexpr Color kSunlight{255, 226, 170};

Color mix(const Color& a, const Color& b, float part) {
    return a * (1 - part) + b * part;
}

float smoothStep(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

float lattice(int x, int y) {
    std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x8DA6B343u ^ static_cast<std::uint32_t>(y) * 0xD8163841u;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    hash = (hash ^ hash >> 12) * 0x297A2D39u;
    return static_cast<float>((hash ^ hash >> 15) >> 8) / static_cast<float>(1u << 24);
}

int floorToInt(float value) {
    const int truncated = static_cast<int>(value);
    return truncated - (static_cast<float>(truncated) > value ? 1 : 0);
}

/// Smooth noise from 0 to 1.
float noise(float x, float y) {
    const int column = floorToInt(x);
    const int row = floorToInt(y);
    const float right = x - static_cast<float>(column);
    const float under = y - static_cast<float>(row);
    const float across = right * right * (3 - 2 * right);
    const float down = under * under * (3 - 2 * under);
    const float upper = lattice(column, row) + across * (lattice(column + 1, row) - lattice(column, row));
    const float lower = lattice(column, row + 1) + across * (lattice(column + 1, row + 1) - lattice(column, row + 1));
    return upper + down * (lower - upper);
}

/// Sums octaves of noise, each half as strong and twice as fine; from 0 to 1.
float fractalNoise(float x, float y, int octaves) {
    float sum = 0;
    float strength = 0.5f;
    float total = 0;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += strength * noise(x, y);
        total += strength;
        strength *= 0.5f;
        x = x * 2.03f + 17.1f;
        y = y * 2.03f + 5.7f;
    }
    return sum / total;
}

struct Range {
    float height; ///< of its mean ridge
    float relief;
    float frequency;
    float haze;  ///< 1: invisible
    float trees; ///< height of the trees on it
    Color rock;
};

constexpr Range kRanges[] = {
    // height, relief, frequency, haze, trees, rock
    {0.46f, 0.34f, 3.1f, 0.62f, 0.000f, {104, 112, 132}},
    {0.53f, 0.22f, 4.3f, 0.42f, 0.000f, {78, 92, 104}},
    {0.60f, 0.14f, 5.9f, 0.22f, 0.004f, {50, 74, 62}},
    {0.645f, 0.08f, 8.3f, 0.06f, 0.018f, {26, 48, 34}},
};
constexpr std::size_t kRangeCount = std::size(kRanges);

/// The height of each range's ridge, column by column.
using Ridges = std::array<std::vector<float>, kRangeCount>;

Ridges ridges() {
    Ridges ridges;
    for (std::size_t i = 0; i < kRangeCount; ++i) {
        const Range& range = kRanges[i];
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const float u = static_cast<float>(x) / kWidth;
            const float swell = fractalNoise(u * range.frequency + 31.0f * static_cast<float>(i), 0.5f, 6) - 0.5f;
            const float place = u * 150 + 40 * noise(u * 9, 3.0f);
            const float tree = 1 - 2 * std::abs(place - std::floor(place) - 0.5f);
            const float treeHeight = range.trees * tree * (0.4f + lattice(static_cast<int>(std::floor(place)), 7));
            ridges[i].push_back(range.height - range.relief * swell - treeHeight);
        }
    }
    return ridges;
}

Color sky(float u, float v) {
    Color color = mix(kZenith, kHorizon, smoothStep(-0.05f, 0.62f, v));
    const float distance = std::hypot((u - 0.74f) * 1.33f, v - 0.34f);
    color = mix(color, kSunlight, 0.75f * std::exp(-distance * 5.5f));
    const float depth = 1 / (0.74f - std::min(v, 0.7f)); // clouds crowd together towards the horizon
    const float x = (u - 0.5f) * depth * 3;
    const float y = depth * 2.6f;
    const float density = fractalNoise(x, y, 5);
    const float lit = density - fractalNoise(x + 0.16f, y - 0.12f, 3);
    const Color cloud = mix({150, 158, 176}, {255, 250, 240}, std::clamp(0.6f + 2.5f * lit, 0.0f, 1.0f));
    return mix(color, cloud, 0.9f * smoothStep(0.47f, 0.70f, density));
}

Color mountain(std::size_t i, float u, float v, float ridge) {
    const Range& range = kRanges[i];
    const float below = v - ridge;
    const float relief = fractalNoise(u * 34 + static_cast<float>(i) * 9, v * 44 - u * 18, 4);
    const float slope = relief - fractalNoise(u * 34 + static_cast<float>(i) * 9 + 0.35f, v * 44 - u * 18 - 0.2f, 2);
    Color color = range.rock * std::clamp(0.85f + 1.6f * slope + 0.5f * (relief - 0.5f), 0.25f, 1.6f);
    if (i == 0) // snow lies on high ground that is not steep
        color = mix(color, {236, 240, 248}, smoothStep(0.12f, 0.02f, below + 0.16f * (relief - 0.45f)) * 0.9f);
    const float mist = range.haze + (1 - range.haze) * 0.45f * smoothStep(0.0f, 0.22f, below);
    return mix(color, mix(kHorizon, {178, 196, 216}, 0.55f), std::min(mist, 1.0f));
}

/// Everything above the shore line.
Color vista(const Ridges& ridges, float u, float v) {
    const auto column = static_cast<std::size_t>(std::clamp(u, 0.0f, 0.999f) * kWidth);
    for (std::size_t i = kRangeCount; i-- > 0;) {
        if (v > ridges[i][column]) {
            return mountain(i, u, v, ridges[i][column]);
        }
    }
    return sky(u, v);
}

Color lake(const Ridges& ridges, float u, float v) {
    const float depth = v - kShoreline;
    const float ripple = noise(u * 22, 40 / (depth + 0.05f)) - 0.5f;
    const Color mirrored = vista(ridges, u + ripple * 0.05f * depth, kShoreline - depth * (1.6f + 0.5f * ripple));
    const float glitter = smoothStep(0.78f, 0.95f, noise(u * 260, v * 520)) * smoothStep(0.0f, 0.15f, depth);
    return mix(mirrored * 0.82f, {40, 66, 82}, 0.25f + depth) + Color{1, 0.95f, 0.8f} * (26 * glitter);
}

Color meadow(float u, float v, float edge) {
    const float near = (v - edge) / (1 - edge);
    const float blades = fractalNoise(u * 240 / (0.6f + near), v * 60 / (0.5f + near), 3);
    const float patches = fractalNoise(u * 9, v * 16, 4);
    Color color =
        mix({40, 58, 22}, {142, 150, 62}, std::clamp(1.9f * blades - 0.5f + 0.5f * (patches - 0.5f), 0.0f, 1.0f));
    const int column = static_cast<int>(u * 190);
    const int row = static_cast<int>(v * 145);
    if (lattice(column, row) > 0.975f && near > 0.1f) { // flowers
        const float distance =
            std::hypot(u * 190 - static_cast<float>(column) - 0.5f, v * 145 - static_cast<float>(row) - 0.5f);
        const Color petals = lattice(row, column) > 0.5f ? Color{236, 216, 60} : Color{208, 72, 98};
        color = mix(color, petals, smoothStep(0.42f, 0.22f, distance));
    }
    return color * (0.62f + 0.38f * near);
}

Color landscape(const Ridges& ridges, float u, float v) {
    const float edge = kMeadow + 0.05f * (fractalNoise(u * 5, 2.0f, 4) - 0.5f) + 0.03f * (u - 0.4f);
    const Color color = v > edge ? meadow(u, v, edge) : v > kShoreline ? lake(ridges, u, v) : vista(ridges, u, v);
    const float vignette = 1 - 0.35f * ((u - 0.5f) * (u - 0.5f) + (v - 0.5f) * (v - 0.5f));
    return color * vignette;
}

std::uint8_t toByte(float value) {
    // Without a call of the rounding functions, which no vector holds.
    return static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f) + 0.5f); // NOLINT(bugprone-incorrect-roundings)
}

/// Red, green and blue, row by row.
std::vector<char> paint() {
    std::vector<char> pixels;
    pixels.reserve(SoftwareDevices::kDefaultSceneBytes);
    const Ridges ridge = ridges();
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const Color color = landscape(ridge, static_cast<float>(x) / kWidth, static_cast<float>(y) / kHeight);
            for (const float component : {color.red, color.green, color.blue}) {
                pixels.push_back(static_cast<char>(toByte(component)));
            }
        }
    }
    return pixels;
}

} // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::cerr << "Usage: " << words[0] << " FILE\n";
        return EXIT_FAILURE;
    }
    const std::vector<char> pixels = paint();
    std::ofstream file(words[1], std::ios::binary);
    file.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    file.close();
    if (!file) {
        std::cerr << words[1] << ": cannot be written\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
