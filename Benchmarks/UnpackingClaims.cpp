// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Claims.h"
#include "Imaging/PackedSamples.h"
#include "Support/Frames.h"

namespace Benchmarks {

namespace {

using namespace Imaging;

/// Half the speed of a copy.
constexpr double kUnpackingLimit = 2;

struct PackedFormat {
    const char* name;
    SamplePacking packing;
};
constexpr PackedFormat kPackedFormats[] = {{"Mono10p", SamplePacking::TenP},
                                           {"Mono12p", SamplePacking::TwelveP},
                                           {"Mono10Packed", SamplePacking::GigETen},
                                           {"Mono12Packed", SamplePacking::GigETwelve}};

using Samples = std::vector<std::uint16_t>;

Samples randomSamples(std::size_t count) {
    std::mt19937 random(1);
    Samples samples(count);
    for (std::uint16_t& sample : samples) {
        sample = static_cast<std::uint16_t>(random());
    }
    return samples;
}

/// Memory that both variants read and write.
struct SampleBuffers {
    explicit SampleBuffers(std::size_t count)
        : sources([&] { return randomSamples(count); }), results([&] { return Samples(count); }) {}

    Rotation<Samples> sources;
    Rotation<Samples> results;
};

std::pair<Variant, Variant> unpacking(SamplePacking packing, std::size_t samples) {
    const auto buffers = std::make_shared<SampleBuffers>(samples);
    return {{[buffers, samples] {
                std::memcpy(buffers->results.next().data(), buffers->sources.next().data(), 2 * samples);
                benchmark::ClobberMemory();
            }},
            {[buffers, packing, samples] {
                const Samples& packed = buffers->sources.next();
                unpackSamples(packing, reinterpret_cast<const unsigned char*>(packed.data()), samples,
                              buffers->results.next().data());
                benchmark::ClobberMemory();
            }}};
}

} // namespace

std::vector<Claim> unpackingClaims(Scope scope) {
    std::vector<Claim> claims;
    for (const FrameSize& size : {kMediumSize, kLargeSize}) {
        if (scope == Scope::Short && size.width == kLargeSize.width) {
            continue;
        }
        for (const PackedFormat& format : kPackedFormats) {
            claims.push_back({"P27", std::string(format.name) + " unpacked, " + size.name, "memcpy of result",
                              kUnpackingLimit, [&format, samples = static_cast<std::size_t>(size.width * size.height)] {
                                  return unpacking(format.packing, samples);
                              }});
        }
    }
    return claims;
}

} // namespace Benchmarks
