#include "Imaging/SampleLoops.h"

#include <algorithm>
#include <cstring>

namespace Imaging {

namespace {

/// Weights of OpenCV's grey, together 2 to the power of 15.
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
    // Signed words, whose upper halves of products every processor has.
    const auto factor = static_cast<std::int16_t>(255 * 32768 / largest);
    const auto divisor = static_cast<std::int16_t>(largest);
    const auto half = static_cast<std::int16_t>((largest + 1) / 2);
    for (std::size_t i = 0; i < count; ++i) {
        const auto sample = load<std::int16_t>(samples, i);
        // The level, or one less; what remains, below 3/2 of the divisor, tells which.
        const auto level = static_cast<std::int16_t>((static_cast<std::int16_t>(2 * sample) * factor) >> 16);
        const auto remainder = static_cast<std::int16_t>(255 * sample - level * divisor);
        result[i] = static_cast<unsigned char>(level + (remainder >= half ? 1 : 0));
    }
}

/// Samples of some pixels, and a rest.
using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
using Words [[gnu::vector_size(16)]] = std::uint16_t;

[[gnu::always_inline]] inline Bytes reversed(Bytes samples) {
    return __builtin_shufflevector(samples, samples, 2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
}

[[gnu::always_inline]] inline Words reversed(Words samples) {
    return __builtin_shufflevector(samples, samples, 2, 1, 0, 5, 4, 3, 6, 7);
}

template <typename Vector, typename Sample>
[[gnu::always_inline]] inline void reverse(const unsigned char* __restrict source, std::size_t pixels,
                                           unsigned char* __restrict target) {
    constexpr std::size_t kSamples = sizeof(Vector) / sizeof(Sample);
    std::size_t pixel = 0;
    // The rest is written once more, with the next pixels.
    for (; 3 * pixel + kSamples <= 3 * pixels; pixel += kSamples / 3) {
        Vector samples;
        std::memcpy(&samples, source + 3 * sizeof(Sample) * pixel, sizeof samples);
        samples = reversed(samples);
        std::memcpy(target + 3 * sizeof(Sample) * pixel, &samples, sizeof samples);
    }
    for (; pixel < pixels; ++pixel) {
        for (std::size_t sample = 0; sample < 3; ++sample) {
            store(target, 3 * pixel + sample, load<Sample>(source, 3 * pixel + 2 - sample));
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

template <auto loop, typename... Arguments>
QUILL_WIDE_VECTORS auto runWidely(Arguments... arguments) {
    return loop(arguments...);
}

/// Runs a loop as it was compiled for these vectors.
template <auto loop, typename... Arguments>
auto run(Vectors vectors, Arguments... arguments) {
    return vectors == Vectors::Wide ? runWidely<loop>(arguments...) : loop(arguments...);
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
        run<reverse<Bytes, std::uint8_t>>(vectors, source, pixels, target);
    } else {
        run<reverse<Words, std::uint16_t>>(vectors, source, pixels, target);
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

} // namespace Imaging
