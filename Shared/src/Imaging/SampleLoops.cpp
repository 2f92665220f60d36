// SPDX-License-Identifier: Apache-2.0

#include "Imaging/SampleLoops.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

#include <opencv2/core/hal/hal.hpp>

#include "Imaging/VectorLoops.h"

namespace Imaging {

namespace {

/// Weights of OpenCV's grey, with the sum 2^15.
constexpr std::uint32_t kRedWeight = 9798;
constexpr std::uint32_t kGreenWeight = 19235;
constexpr std::uint32_t kBlueWeight = 3735;

template <typename Sample>
[[gnu::always_inline]] inline Sample load(const unsigned char* samples, std::size_t i) {
    Sample sample = 0;
    std::memcpy(&sample, samples + sizeof sample * i, sizeof sample);
    return sample;
}

template <typename Sample>
[[gnu::always_inline]] inline void store(unsigned char* samples, std::size_t i, Sample sample) {
    std::memcpy(samples + sizeof sample * i, &sample, sizeof sample);
}

[[gnu::always_inline]] inline std::uint16_t findLargest(const unsigned char* samples, std::size_t count) {
    std::uint16_t largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        largest = std::max(largest, load<std::uint16_t>(samples, i));
    }
    return largest;
}

[[gnu::always_inline]] inline void scale(const unsigned char* __restrict samples, std::size_t count, unsigned largest,
                                         unsigned char* __restrict result) {
    // Signed words, because every processor can compute the upper halves of their products.
    const auto factor = static_cast<std::int16_t>(255 * 32768 / largest);
    const auto divisor = static_cast<std::int16_t>(largest);
    const auto half = static_cast<std::int16_t>((largest + 1) / 2);
    for (std::size_t i = 0; i < count; ++i) {
        const auto sample = load<std::int16_t>(samples, i);
        // The level, or one less; the remainder, below 3/2 of the divisor, decides.
        const auto level = static_cast<std::int16_t>((static_cast<std::int16_t>(2 * sample) * factor) >> 16);
        const auto remainder = static_cast<std::int16_t>(255 * sample - level * divisor);
        result[i] = static_cast<unsigned char>(level + (remainder >= half ? 1 : 0));
    }
}

/// Samples side by side.
using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
using Words [[gnu::vector_size(16)]] = std::uint16_t;
template <typename Sample>
using VectorOf = std::conditional_t<sizeof(Sample) == 1, Bytes, Words>;
template <typename Sample>
constexpr std::size_t kLanes = sizeof(VectorOf<Sample>) / sizeof(Sample);
template <typename Sample>
using Lanes = std::make_index_sequence<kLanes<Sample>>;

template <typename Sample>
[[gnu::always_inline]] inline VectorOf<Sample> loadVector(const unsigned char* samples) {
    VectorOf<Sample> vector;
    std::memcpy(&vector, samples, sizeof vector);
    return vector;
}

template <typename Vector>
[[gnu::always_inline]] inline void storeVector(unsigned char* samples, const Vector& vector) {
    std::memcpy(samples, &vector, sizeof vector);
}

/// Exchanges the first and the third sample of whole pixels; a remainder stays.
template <typename Sample, std::size_t... Lane>
[[gnu::always_inline]] inline VectorOf<Sample> reversed(VectorOf<Sample> samples, std::index_sequence<Lane...>) {
    constexpr std::size_t kWhole = kLanes<Sample> / 3 * 3;
    return __builtin_shufflevector(samples, samples, (Lane < kWhole ? Lane + 2 - 2 * (Lane % 3) : Lane)...);
}

template <typename Sample>
[[gnu::always_inline]] inline void reverse(const unsigned char* __restrict source, std::size_t pixels,
                                           unsigned char* __restrict target) {
    std::size_t pixel = 0;
    // The remainder is written again with the next pixels.
    for (; 3 * pixel + kLanes<Sample> <= 3 * pixels; pixel += kLanes<Sample> / 3) {
        const std::size_t byte = 3 * sizeof(Sample) * pixel;
        storeVector(target + byte, reversed<Sample>(loadVector<Sample>(source + byte), Lanes<Sample>{}));
    }
    for (; pixel < pixels; ++pixel) {
        for (std::size_t sample = 0; sample < 3; ++sample) {
            store(target, 3 * pixel + sample, load<Sample>(source, 3 * pixel + 2 - sample));
        }
    }
}

/// Moves each sample of plane @p channel to its lane in one of the three vectors of interleaved samples; no two samples
/// of a plane have the same lane.
template <typename Sample, std::size_t channel, std::size_t... Lane>
[[gnu::always_inline]] inline VectorOf<Sample> spread(VectorOf<Sample> plane, std::index_sequence<Lane...>) {
    constexpr std::size_t kVector = kLanes<Sample>;
    // Of the lanes of the three vectors, one belongs to this plane.
    const auto sampleOf = [](std::size_t lane) constexpr {
        while (lane % 3 != channel) {
            lane += kVector;
        }
        return lane / 3;
    };
    return __builtin_shufflevector(plane, plane, sampleOf(Lane)...);
}

/// Takes from @p others the lanes that belong to plane @p channel in the interleaved vector number @p vector.
template <typename Sample, std::size_t vector, std::size_t channel, std::size_t... Lane>
[[gnu::always_inline]] inline VectorOf<Sample> blend(VectorOf<Sample> some, VectorOf<Sample> others,
                                                     std::index_sequence<Lane...>) {
    constexpr std::size_t kVector = kLanes<Sample>;
    return __builtin_shufflevector(some, others, ((vector * kVector + Lane) % 3 == channel ? kVector + Lane : Lane)...);
}

template <typename Sample, std::size_t vector>
[[gnu::always_inline]] inline void storeTriples(VectorOf<Sample> a, VectorOf<Sample> b, VectorOf<Sample> c,
                                                unsigned char* target) {
    const auto ab = blend<Sample, vector, 1>(a, b, Lanes<Sample>{});
    storeVector(target + vector * sizeof a, blend<Sample, vector, 2>(ab, c, Lanes<Sample>{}));
}

/// Takes the lanes of the two vectors in turn, from the first one or from the middle on.
template <typename Sample, std::size_t begin, std::size_t... Lane>
[[gnu::always_inline]] inline VectorOf<Sample> zip(VectorOf<Sample> a, VectorOf<Sample> b,
                                                   std::index_sequence<Lane...>) {
    return __builtin_shufflevector(a, b, (begin + Lane / 2 + Lane % 2 * kLanes<Sample>)...);
}

template <typename Sample, unsigned channels>
[[gnu::always_inline]] inline void mergePlanes(const unsigned char* __restrict a, const unsigned char* __restrict b,
                                               const unsigned char* __restrict c, const unsigned char* __restrict d,
                                               std::size_t pixels, unsigned char* __restrict target) {
    constexpr Lanes<Sample> kAll;
    constexpr std::size_t kHalf = kLanes<Sample> / 2;
    std::size_t pixel = 0;
    for (; pixel + kLanes<Sample> <= pixels; pixel += kLanes<Sample>) {
        const std::size_t byte = sizeof(Sample) * pixel;
        unsigned char* const to = target + channels * byte;
        auto x = loadVector<Sample>(a + byte);
        auto y = loadVector<Sample>(b + byte);
        auto z = loadVector<Sample>(c + byte);
        if constexpr (channels == 3) {
            x = spread<Sample, 0>(x, kAll);
            y = spread<Sample, 1>(y, kAll);
            z = spread<Sample, 2>(z, kAll);
            storeTriples<Sample, 0>(x, y, z, to);
            storeTriples<Sample, 1>(x, y, z, to);
            storeTriples<Sample, 2>(x, y, z, to);
        } else {
            const auto w = loadVector<Sample>(d + byte);
            const auto xz = zip<Sample, 0>(x, z, kAll), yw = zip<Sample, 0>(y, w, kAll);
            const auto xz2 = zip<Sample, kHalf>(x, z, kAll), yw2 = zip<Sample, kHalf>(y, w, kAll);
            storeVector(to, zip<Sample, 0>(xz, yw, kAll));
            storeVector(to + sizeof x, zip<Sample, kHalf>(xz, yw, kAll));
            storeVector(to + 2 * sizeof x, zip<Sample, 0>(xz2, yw2, kAll));
            storeVector(to + 3 * sizeof x, zip<Sample, kHalf>(xz2, yw2, kAll));
        }
    }
    const std::array<const unsigned char*, 4> planes{a, b, c, d};
    for (; pixel < pixels; ++pixel) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            store(target, channels * pixel + channel, load<Sample>(planes[channel], pixel));
        }
    }
}

template <typename Sample>
[[gnu::always_inline]] inline void mixGrey(const unsigned char* __restrict red, const unsigned char* __restrict green,
                                           const unsigned char* __restrict blue, std::size_t pixels,
                                           unsigned char* __restrict grey) {
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t sum = load<Sample>(red, i) * kRedWeight + load<Sample>(green, i) * kGreenWeight +
                                  load<Sample>(blue, i) * kBlueWeight;
        store(grey, i, static_cast<Sample>((sum + (1U << 14)) >> 15));
    }
}

/// Uses OpenCV, which is faster than a loop without vector instructions that move bytes.
template <typename Sample>
void mergePortably(const std::array<const unsigned char*, 4>& planes, unsigned channels, std::size_t pixels,
                   unsigned char* target) {
    constexpr std::size_t kPixelsAtOnce = 1024;
    // Aligned to a vector register, OpenCV would bypass the cache.
    alignas(64) std::array<Sample, 4 * kPixelsAtOnce + 1> merged;
    for (std::size_t begin = 0; begin < pixels; begin += kPixelsAtOnce) {
        const std::size_t count = std::min(kPixelsAtOnce, pixels - begin);
        std::array<const Sample*, 4> sources{};
        for (unsigned channel = 0; channel < channels; ++channel) {
            sources[channel] = reinterpret_cast<const Sample*>(planes[channel]) + begin;
        }
        if constexpr (sizeof(Sample) == 1) {
            cv::hal::merge8u(sources.data(), &merged[1], static_cast<int>(count), static_cast<int>(channels));
        } else {
            cv::hal::merge16u(sources.data(), &merged[1], static_cast<int>(count), static_cast<int>(channels));
        }
        std::memcpy(target + sizeof(Sample) * channels * begin, &merged[1], sizeof(Sample) * channels * count);
    }
}

template <typename Sample>
void interleaveSamples(const std::array<const unsigned char*, 4>& planes, unsigned channels, std::size_t pixels,
                       unsigned char* target, Vectors vectors) {
    if (vectors != Vectors::Wide) {
        mergePortably<Sample>(planes, channels, pixels, target);
    } else if (channels == 3) {
        runWidely<mergePlanes<Sample, 3>>(planes[0], planes[1], planes[2], planes[3], pixels, target);
    } else {
        runWidely<mergePlanes<Sample, 4>>(planes[0], planes[1], planes[2], planes[3], pixels, target);
    }
}

} // namespace

std::uint16_t largestSample(const unsigned char* samples, std::size_t count, Vectors vectors) {
    return run<findLargest>(vectors, samples, count);
}

void scaleSamples(const unsigned char* samples, std::size_t count, unsigned largest, unsigned char* result,
                  Vectors vectors) {
    run<scale>(vectors, samples, count, largest, result);
}

void reverseTriples(const unsigned char* source, std::size_t pixels, std::size_t bytesPerSample, unsigned char* target,
                    Vectors vectors) {
    if (bytesPerSample == 1) {
        run<reverse<std::uint8_t>>(vectors, source, pixels, target);
    } else {
        run<reverse<std::uint16_t>>(vectors, source, pixels, target);
    }
}

void greyOfPlanes(const unsigned char* red, const unsigned char* green, const unsigned char* blue, std::size_t pixels,
                  std::size_t bytesPerSample, unsigned char* grey, Vectors vectors) {
    if (bytesPerSample == 1) {
        run<mixGrey<std::uint8_t>>(vectors, red, green, blue, pixels, grey);
    } else {
        run<mixGrey<std::uint16_t>>(vectors, red, green, blue, pixels, grey);
    }
}

void interleave(const std::array<const unsigned char*, 4>& planes, unsigned channels, std::size_t pixels,
                std::size_t bytesPerSample, unsigned char* target, Vectors vectors) {
    if (bytesPerSample == 1) {
        interleaveSamples<std::uint8_t>(planes, channels, pixels, target, vectors);
    } else {
        interleaveSamples<std::uint16_t>(planes, channels, pixels, target, vectors);
    }
}

} // namespace Imaging
