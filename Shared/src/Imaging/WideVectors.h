// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

/// Vectors of samples for Vectors::Wide, and what moves samples between planes and interleaved pixels. A vector has two
/// halves, since instructions move bytes within a half. Only for source files that are compiled with the attribute
/// QUILL_WIDE_VECTORS.
namespace Imaging {

constexpr std::size_t kWideBytes = 32;
template <typename Sample>
struct WideVector {
    using Type [[gnu::vector_size(kWideBytes)]] = Sample;
};
template <typename Sample>
using WideOf = typename WideVector<Sample>::Type;
template <typename Sample>
constexpr std::size_t kWideLanes = kWideBytes / sizeof(Sample);
template <typename Sample>
using AllLanes = std::make_index_sequence<kWideLanes<Sample>>;
using Quads = WideOf<std::uint32_t>;

template <typename Sample>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> loadWide(const void* samples) {
    WideOf<Sample> vector;
    std::memcpy(&vector, samples, sizeof vector);
    return vector;
}

template <typename Sample>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void storeWide(void* samples, const WideOf<Sample>& vector) {
    std::memcpy(samples, &vector, sizeof vector);
}

/// The place of lane @p lane of a half within the half of lane @p of.
template <typename Sample>
constexpr std::size_t beside(std::size_t of, std::size_t lane) {
    constexpr std::size_t kHalf = kWideLanes<Sample> / 2;
    return of / kHalf * kHalf + lane;
}
template <typename Sample>
constexpr std::size_t laneOfHalf(std::size_t lane) {
    return lane % (kWideLanes<Sample> / 2);
}

/// Of the three vectors of as many interleaved pixels as a half has lanes: the one whose lane belongs to a channel.
template <typename Sample>
constexpr std::size_t vectorOfTriples(std::size_t lane, std::size_t channel) {
    std::size_t vector = 0;
    while ((vector * (kWideLanes<Sample> / 2) + lane) % 3 != channel) {
        ++vector;
    }
    return vector;
}

/// Joins half number @p halfA of a vector and half number @p halfB of another.
template <typename Sample, std::size_t halfA, std::size_t halfB, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> join(WideOf<Sample> a, WideOf<Sample> b,
                                                                     std::index_sequence<Lane...>) {
    constexpr std::size_t kHalf = kWideLanes<Sample> / 2;
    return __builtin_shufflevector(a, b, (Lane < kHalf ? halfA * kHalf + Lane : (1 + halfB) * kHalf + Lane)...);
}

/// Moves each sample of plane @p channel to its lane in one of three vectors of interleaved samples; no two samples of
/// a plane have the same lane.
template <typename Sample, std::size_t channel, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> spread(WideOf<Sample> plane,
                                                                       std::index_sequence<Lane...>) {
    const auto sampleOf = [](std::size_t lane) constexpr {
        return (vectorOfTriples<Sample>(lane, channel) * (kWideLanes<Sample> / 2) + lane) / 3;
    };
    return __builtin_shufflevector(plane, plane, beside<Sample>(Lane, sampleOf(laneOfHalf<Sample>(Lane)))...);
}

/// Takes from @p others the lanes that belong to @p channel in interleaved vector number @p vector.
template <typename Sample, std::size_t vector, std::size_t channel, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> blend(WideOf<Sample> some, WideOf<Sample> others,
                                                                      std::index_sequence<Lane...>) {
    return __builtin_shufflevector(
        some, others,
        (vectorOfTriples<Sample>(laneOfHalf<Sample>(Lane), channel) == vector ? kWideLanes<Sample> + Lane : Lane)...);
}

template <typename Sample, std::size_t vector>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> triples(WideOf<Sample> a, WideOf<Sample> b,
                                                                        WideOf<Sample> c) {
    constexpr AllLanes<Sample> kAll;
    return blend<Sample, vector, 2>(blend<Sample, vector, 1>(a, b, kAll), c, kAll);
}

/// Takes the lanes of the two vectors in turn, of each half from its begin or its middle on.
template <typename Sample, std::size_t begin, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample> zip(WideOf<Sample> a, WideOf<Sample> b,
                                                                    std::index_sequence<Lane...>) {
    return __builtin_shufflevector(
        a, b, (beside<Sample>(Lane, begin + laneOfHalf<Sample>(Lane) / 2) + Lane % 2 * kWideLanes<Sample>)...);
}

/// Takes the lanes of a channel from three vectors of interleaved samples, and puts them in order.
template <typename Sample, std::size_t channel, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline WideOf<Sample>
gather(WideOf<Sample> a, WideOf<Sample> b, WideOf<Sample> c, std::index_sequence<Lane...> all) {
    const auto lanes = blend<Sample, 2, channel>(blend<Sample, 1, channel>(a, b, all), c, all);
    return __builtin_shufflevector(lanes, lanes,
                                   beside<Sample>(Lane, laneOfHalf<Sample>(3 * laneOfHalf<Sample>(Lane) + channel))...);
}

/// Puts the samples of whole pixels of four in the order of channels, in each half.
template <typename Sample, std::size_t... Lane>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline Quads byChannel(WideOf<Sample> pixels, std::index_sequence<Lane...>) {
    constexpr std::size_t kPixels = kWideLanes<Sample> / 8;
    return reinterpret_cast<Quads>(__builtin_shufflevector(
        pixels, pixels,
        beside<Sample>(Lane, laneOfHalf<Sample>(Lane) % kPixels * 4 + laneOfHalf<Sample>(Lane) / kPixels)...));
}

/// Writes the samples of as many pixels as a vector has lanes.
template <typename Sample, unsigned channels>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline void
storeInterleaved(WideOf<Sample> x, WideOf<Sample> y, WideOf<Sample> z, WideOf<Sample> w, void* target) {
    constexpr AllLanes<Sample> kAll;
    auto* const to = static_cast<unsigned char*>(target);
    if constexpr (channels == 3) {
        x = spread<Sample, 0>(x, kAll);
        y = spread<Sample, 1>(y, kAll);
        z = spread<Sample, 2>(z, kAll);
        const auto first = triples<Sample, 0>(x, y, z), second = triples<Sample, 1>(x, y, z);
        const auto third = triples<Sample, 2>(x, y, z);
        storeWide<Sample>(to, join<Sample, 0, 0>(first, second, kAll));
        storeWide<Sample>(to + kWideBytes, join<Sample, 0, 1>(third, first, kAll));
        storeWide<Sample>(to + 2 * kWideBytes, join<Sample, 1, 1>(second, third, kAll));
    } else {
        constexpr std::size_t kQuarter = kWideLanes<Sample> / 4;
        const auto xz = zip<Sample, 0>(x, z, kAll), yw = zip<Sample, 0>(y, w, kAll);
        const auto xz2 = zip<Sample, kQuarter>(x, z, kAll), yw2 = zip<Sample, kQuarter>(y, w, kAll);
        const auto first = zip<Sample, 0>(xz, yw, kAll), second = zip<Sample, kQuarter>(xz, yw, kAll);
        const auto third = zip<Sample, 0>(xz2, yw2, kAll), fourth = zip<Sample, kQuarter>(xz2, yw2, kAll);
        storeWide<Sample>(to, join<Sample, 0, 0>(first, second, kAll));
        storeWide<Sample>(to + kWideBytes, join<Sample, 0, 0>(third, fourth, kAll));
        storeWide<Sample>(to + 2 * kWideBytes, join<Sample, 1, 1>(first, second, kAll));
        storeWide<Sample>(to + 3 * kWideBytes, join<Sample, 1, 1>(third, fourth, kAll));
    }
}

/// Reads the samples of as many pixels as a vector has lanes.
template <typename Sample, unsigned channels>
[[gnu::always_inline]] QUILL_WIDE_VECTORS inline std::array<WideOf<Sample>, channels>
loadPlanes(const unsigned char* source) {
    using Vector = WideOf<Sample>;
    constexpr AllLanes<Sample> kAll;
    const Vector v0 = loadWide<Sample>(source), v1 = loadWide<Sample>(source + kWideBytes);
    const Vector v2 = loadWide<Sample>(source + 2 * kWideBytes);
    if constexpr (channels == 3) {
        const Vector a = join<Sample, 0, 1>(v0, v1, kAll), b = join<Sample, 1, 0>(v0, v2, kAll);
        const Vector c = join<Sample, 0, 1>(v1, v2, kAll);
        return {gather<Sample, 0>(a, b, c, kAll), gather<Sample, 1>(a, b, c, kAll), gather<Sample, 2>(a, b, c, kAll)};
    } else {
        using Number = std::uint32_t;
        constexpr AllLanes<Number> kQuads;
        const Vector v3 = loadWide<Sample>(source + 3 * kWideBytes);
        const Quads a = byChannel<Sample>(join<Sample, 0, 0>(v0, v2, kAll), kAll);
        const Quads b = byChannel<Sample>(join<Sample, 1, 1>(v0, v2, kAll), kAll);
        const Quads c = byChannel<Sample>(join<Sample, 0, 0>(v1, v3, kAll), kAll);
        const Quads d = byChannel<Sample>(join<Sample, 1, 1>(v1, v3, kAll), kAll);
        const Quads ac = zip<Number, 0>(a, c, kQuads), bd = zip<Number, 0>(b, d, kQuads);
        const Quads ac2 = zip<Number, 2>(a, c, kQuads), bd2 = zip<Number, 2>(b, d, kQuads);
        return {reinterpret_cast<Vector>(zip<Number, 0>(ac, bd, kQuads)),
                reinterpret_cast<Vector>(zip<Number, 2>(ac, bd, kQuads)),
                reinterpret_cast<Vector>(zip<Number, 0>(ac2, bd2, kQuads)),
                reinterpret_cast<Vector>(zip<Number, 2>(ac2, bd2, kQuads))};
    }
}

} // namespace Imaging
