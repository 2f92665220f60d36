// SPDX-License-Identifier: Apache-2.0

#include <cstring>
#include <memory>

#include <benchmark/benchmark.h>

#include "Claims.h"
#include "Support/Frames.h"

namespace Benchmarks {

namespace {

using namespace Imaging;
using Format = IMAGE_FORMAT;

constexpr unsigned kBitDepth = 12;
constexpr double kLimitTo8Bits = 1.5;
constexpr double kLimitTo16Bits = 1.5;
constexpr Format kFormats[] = {Format::MONO, Format::BGR, Format::RGB};

using FrameRotation = Rotation<std::unique_ptr<Image>>;

template <typename Sample>
using Export = std::vector<Sample> (Image::*)() const;

template <typename Sample>
std::pair<Variant, Variant> makeVariants(const FrameKind& kind, Export<Sample> take) {
    const auto frames = [&] { return std::make_shared<FrameRotation>([&] { return randomFrame(kind); }); };
    const auto sources = frames();
    auto exported = std::make_shared<Rotation<std::vector<Sample>>>([] { return std::vector<Sample>(); });
    return {{[sources, results = frames(), bytes = kind.bytes()] {
                std::memcpy(results->next()->getDataAddress(), sources->next()->getDataAddress(), bytes);
                benchmark::ClobberMemory();
            }},
            {[sources, exported, take] {
                std::vector<Sample>& result = exported->next();
                result = {}; // first, like an application that releases the oldest frame
                result = (*sources->next().*take)();
            }}};
}

} // namespace

std::vector<Claim> exportClaims(Scope scope) {
    std::vector<Claim> claims;
    for (const FrameSize& size : {kMediumSize, kLargeSize}) {
        if (scope == Scope::Short && size.width == kLargeSize.width) {
            continue;
        }
        for (const Format format : kFormats) {
            const FrameKind kind{size, kBitDepth, format};
            const auto add = [&](const char* bits, double limit, auto take) {
                claims.push_back({"P10", getFormatName(format) + ", 12 bit, " + size.name + ", exported to " + bits,
                                  "memcpy of source", limit, [kind, take] { return makeVariants(kind, take); }});
            };
            add("8 bit", kLimitTo8Bits, &Image::get8bitImageData);
            add("16 bit", kLimitTo16Bits, &Image::get16bitImageData);
        }
    }
    return claims;
}

} // namespace Benchmarks
