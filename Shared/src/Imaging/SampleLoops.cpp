// SPDX-License-Identifier: Apache-2.0

#include "Imaging/SampleLoops.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

#include <opencv2/core/hal/hal.hpp>

#include "Imaging/VectorLoops.h"
#include "Imaging/WideVectors.h"

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

template <typename Sample, unsigned channels>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void
mergePlanes(const unsigned char* __restrict a, const unsigned char* __restrict b, const unsigned char* __restrict c,
            const unsigned char* __restrict d, std::size_t pixels, unsigned char* __restrict target) {
    std::size_t pixel = 0;
    for (; pixel + kWideLanes<Sample> <= pixels; pixel += kWideLanes<Sample>) {
        const std::size_t byte = sizeof(Sample) * pixel;
        WideOf<Sample> w{};
        if constexpr (channels == 4) {
            w = loadWide<Sample>(d + byte);
        }
        storeInterleaved<Sample, channels>(loadWide<Sample>(a + byte), loadWide<Sample>(b + byte),
                                           loadWide<Sample>(c + byte), w, target + channels * byte);
    }
    const std::array<const unsigned char*, 4> planes{a, b, c, d};
    for (; pixel < pixels; ++pixel) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            store(target, channels * pixel + channel, load<Sample>(planes[channel], pixel));
        }
    }
}

/// Stores nothing if the plane is null.
template <typename Sample>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void storePlane(unsigned char* plane, std::size_t byte,
                                                                 const WideOf<Sample>& samples) {
    if (plane != nullptr) {
        storeWide<Sample>(plane + byte, samples);
    }
}

/// A missing plane is null.
template <typename Sample, unsigned channels>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void
splitPixels(const unsigned char* __restrict source, std::size_t pixels, unsigned char* __restrict a,
            unsigned char* __restrict b, unsigned char* __restrict c, unsigned char* __restrict d) {
    std::size_t pixel = 0;
    for (; pixel + kWideLanes<Sample> <= pixels; pixel += kWideLanes<Sample>) {
        const std::size_t byte = sizeof(Sample) * pixel;
        // By name: in an array that a loop indexes, vectors go through memory.
        const auto samples = loadPlanes<Sample, channels>(source + channels * byte);
        storePlane<Sample>(a, byte, samples[0]);
        storePlane<Sample>(b, byte, samples[1]);
        storePlane<Sample>(c, byte, samples[2]);
        if constexpr (channels == 4) {
            storePlane<Sample>(d, byte, samples[3]);
        }
    }
    const std::array<unsigned char*, 4> planes{a, b, c, d};
    for (; pixel < pixels; ++pixel) {
        for (unsigned channel = 0; channel < channels; ++channel) {
            if (planes[channel] != nullptr) {
                store(planes[channel], pixel, load<Sample>(source, channels * pixel + channel));
            }
        }
    }
}

/// Multiplies neighbouring words and adds the two products.
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline Quads addProducts(WideOf<std::uint8_t> pairs, std::int16_t first,
                                                                   std::int16_t second) {
#ifdef __x86_64__
    using Words = WideOf<std::int16_t>;
    const auto weights = reinterpret_cast<Words>(
        Quads{} + (static_cast<std::uint16_t>(first) | static_cast<std::uint32_t>(second) << 16));
    return reinterpret_cast<Quads>(__builtin_ia32_pmaddwd256(reinterpret_cast<Words>(pairs), weights));
#else
    const auto numbers = reinterpret_cast<Quads>(pairs);
    return (numbers & 0xFFFF) * static_cast<std::uint32_t>(first) +
           (numbers >> 16) * static_cast<std::uint32_t>(second);
#endif
}

/// Weighs four pixels of each half, from @p begin on. @p xy has samples of two planes in turn, @p z1 those of the third
/// and ones.
template <std::size_t begin>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline Quads weighed(WideOf<std::uint8_t> xy, WideOf<std::uint8_t> z1,
                                                               std::uint32_t xWeight, std::uint32_t zWeight) {
    constexpr AllLanes<std::uint8_t> kAll;
    const WideOf<std::uint8_t> zero{};
    const auto weight = [](std::uint32_t number) { return static_cast<std::int16_t>(number); };
    const Quads sum = addProducts(zip<std::uint8_t, begin>(xy, zero, kAll), weight(xWeight), weight(kGreenWeight)) +
                      addProducts(zip<std::uint8_t, begin>(z1, zero, kAll), weight(zWeight), 1 << 14);
    return sum >> 15;
}

/// Computes the grey of as many pixels as a vector has bytes; @p y is green.
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<std::uint8_t>
greyOf(WideOf<std::uint8_t> x, WideOf<std::uint8_t> y, WideOf<std::uint8_t> z, std::uint32_t xWeight,
       std::uint32_t zWeight) {
    constexpr AllLanes<std::uint8_t> kAll;
    constexpr std::size_t kQuarter = kWideBytes / 4;
    const WideOf<std::uint8_t> one = WideOf<std::uint8_t>{} + 1;
    const auto xy = zip<std::uint8_t, 0>(x, y, kAll), xy2 = zip<std::uint8_t, kQuarter>(x, y, kAll);
    const auto z1 = zip<std::uint8_t, 0>(z, one, kAll), z12 = zip<std::uint8_t, kQuarter>(z, one, kAll);
    const Quads greys = weighed<0>(xy, z1, xWeight, zWeight) | weighed<kQuarter>(xy, z1, xWeight, zWeight) << 8 |
                        weighed<0>(xy2, z12, xWeight, zWeight) << 16 |
                        weighed<kQuarter>(xy2, z12, xWeight, zWeight) << 24;
    return reinterpret_cast<WideOf<std::uint8_t>>(
        byChannel<std::uint8_t>(reinterpret_cast<WideOf<std::uint8_t>>(greys), kAll));
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

/// Mixes planes of bytes.
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void mixPlanes(const unsigned char* __restrict red,
                                                                const unsigned char* __restrict green,
                                                                const unsigned char* __restrict blue,
                                                                std::size_t pixels, unsigned char* __restrict grey) {
    std::size_t pixel = 0;
    for (; pixel + kWideBytes <= pixels; pixel += kWideBytes) {
        storeWide<std::uint8_t>(grey + pixel,
                                greyOf(loadWide<std::uint8_t>(red + pixel), loadWide<std::uint8_t>(green + pixel),
                                       loadWide<std::uint8_t>(blue + pixel), kRedWeight, kBlueWeight));
    }
    mixGrey<std::uint8_t>(red + pixel, green + pixel, blue + pixel, pixels - pixel, grey + pixel);
}

/// Mixes interleaved pixels of bytes.
template <unsigned channels>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void
mixPixels(const unsigned char* __restrict source, std::size_t pixels, bool redFirst, unsigned char* __restrict grey) {
    const std::uint32_t first = redFirst ? kRedWeight : kBlueWeight, third = redFirst ? kBlueWeight : kRedWeight;
    std::size_t pixel = 0;
    for (; pixel + kWideBytes <= pixels; pixel += kWideBytes) {
        const auto samples = loadPlanes<std::uint8_t, channels>(source + channels * pixel);
        storeWide<std::uint8_t>(grey + pixel, greyOf(samples[0], samples[1], samples[2], first, third));
    }
    for (; pixel < pixels; ++pixel) {
        const unsigned char* const samples = source + channels * pixel;
        grey[pixel] = static_cast<unsigned char>(
            (samples[0] * first + samples[1] * kGreenWeight + samples[2] * third + (1U << 14)) >> 15);
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
    if (bytesPerSample == 1 && vectors == Vectors::Wide) {
        runWidely<mixPlanes>(red, green, blue, pixels, grey);
    } else if (bytesPerSample == 1) {
        mixGrey<std::uint8_t>(red, green, blue, pixels, grey);
    } else {
        run<mixGrey<std::uint16_t>>(vectors, red, green, blue, pixels, grey);
    }
}

void splitWidely(const unsigned char* source, unsigned channels, std::size_t pixels, std::size_t bytesPerSample,
                 const std::array<unsigned char*, 4>& planes) {
    const auto [a, b, c, d] = planes;
    if (bytesPerSample == 1) {
        channels == 3 ? runWidely<splitPixels<std::uint8_t, 3>>(source, pixels, a, b, c, d)
                      : runWidely<splitPixels<std::uint8_t, 4>>(source, pixels, a, b, c, d);
    } else {
        channels == 3 ? runWidely<splitPixels<std::uint16_t, 3>>(source, pixels, a, b, c, d)
                      : runWidely<splitPixels<std::uint16_t, 4>>(source, pixels, a, b, c, d);
    }
}

void mixBytesWidely(const unsigned char* source, unsigned channels, bool redFirst, std::size_t pixels,
                    unsigned char* grey) {
    channels == 3 ? runWidely<mixPixels<3>>(source, pixels, redFirst, grey)
                  : runWidely<mixPixels<4>>(source, pixels, redFirst, grey);
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
