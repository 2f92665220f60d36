// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "Claims.h"
#include "Imaging/Conversion.h"
#include "Imaging/FormatTable.h"
#include "Support/Frames.h"

namespace Benchmarks {

namespace {

using namespace Imaging;
using Format = IMAGE_FORMAT;

/// Steps of a chain that are not codes of cvtColor.
constexpr int kSplit = -1;
constexpr int kMerge = -2;

/// The floor of a conversion.
enum class Floor {
    OneCall,  ///< its only step, into an existing matrix
    TwoCalls, ///< a colour conversion, then a split into the planes of the result, both into existing matrices
    Chain,    ///< its steps one after another, each into a fresh matrix
    Copy      ///< memcpy of the size of the result
};

/// In the order of Floor.
constexpr const char* kFloorNames[] = {"cvtColor", "cvtColor, split", "step by step", "memcpy of result"};

struct ConversionGoal {
    const char* goal;
    Floor floor;
    double limit8;  ///< for samples of 8 bits
    double limit16; ///< for samples of 16 bits; 0: not a goal
    Format from;
    Format to;
    std::vector<int> steps;
};

const std::vector<ConversionGoal> kConversions{
    {"P1", Floor::OneCall, 1.05, 1.05, Format::BGR, Format::RGB, {cv::COLOR_BGR2RGB}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::BGR, Format::BGRA, {cv::COLOR_BGR2BGRA}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::RGBA, Format::BGR, {cv::COLOR_RGBA2BGR}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::BGRA, Format::RGBA, {cv::COLOR_BGRA2RGBA}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::RGB, Format::MONO, {cv::COLOR_RGB2GRAY}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::BGRA, Format::MONO, {cv::COLOR_BGRA2GRAY}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::MONO, Format::RGB, {cv::COLOR_GRAY2BGR}},
    {"P1", Floor::OneCall, 1.05, 1.05, Format::MONO, Format::BGRA, {cv::COLOR_GRAY2BGRA}},
    {"P1", Floor::OneCall, 1.05, 0, Format::BAYER_RGGB, Format::BGR, {cv::COLOR_BayerBG2BGR}},
    {"P1", Floor::OneCall, 1.05, 0, Format::BAYER_GRBG, Format::RGB, {cv::COLOR_BayerGB2RGB}},
    {"P1", Floor::OneCall, 1.05, 0, Format::BAYER_GBRG, Format::BGRA, {cv::COLOR_BayerGR2BGRA}},
    {"P1", Floor::OneCall, 1.05, 0, Format::BAYER_BGGR, Format::MONO, {cv::COLOR_BayerRG2GRAY}},

    {"P2", Floor::OneCall, 0.85, 0.70, Format::BAYER_RGGB, Format::BGR, {cv::COLOR_BayerBG2BGR}},
    {"P2", Floor::OneCall, 0.85, 0.70, Format::BAYER_GRBG, Format::RGB, {cv::COLOR_BayerGB2RGB}},
    {"P2", Floor::OneCall, 0, 0.70, Format::BAYER_GBRG, Format::BGRA, {cv::COLOR_BayerGR2BGRA}},
    {"P3", Floor::OneCall, 0, 0.45, Format::BAYER_BGGR, Format::MONO, {cv::COLOR_BayerRG2GRAY}},

    {"P4", Floor::TwoCalls, 0.50, 0.50, Format::BAYER_RGGB, Format::BGR_PLANAR, {cv::COLOR_BayerBG2BGR, kSplit}},
    {"P4", Floor::TwoCalls, 0.50, 0.50, Format::BAYER_GRBG, Format::RGB_PLANAR, {cv::COLOR_BayerGB2RGB, kSplit}},

    {"P5", Floor::Chain, 0.55, 0.55, Format::RGB, Format::RGB_PLANAR, {kSplit}},
    {"P5", Floor::Chain, 0.55, 0.55, Format::BGR, Format::RGB_PLANAR, {cv::COLOR_BGR2RGB, kSplit}},
    {"P5", Floor::Chain, 0.55, 0.55, Format::RGB, Format::RGBA_PLANAR, {cv::COLOR_RGB2RGBA, kSplit}},
    {"P5", Floor::Chain, 0.55, 0.55, Format::RGBA, Format::RGB_PLANAR, {cv::COLOR_RGBA2RGB, kSplit}},
    {"P5", Floor::Chain, 0.55, 0.55, Format::RGBA, Format::RGBA_PLANAR, {kSplit}},

    {"P6", Floor::Chain, 0.60, 0.60, Format::RGB_PLANAR, Format::RGB, {kMerge}},
    {"P6", Floor::Chain, 0.60, 0.60, Format::BGR_PLANAR, Format::RGB, {kMerge, cv::COLOR_BGR2RGB}},
    {"P6", Floor::Chain, 0.60, 0.60, Format::RGBA_PLANAR, Format::BGR, {kMerge, cv::COLOR_RGBA2BGR}},
    {"P6", Floor::Chain, 0.60, 0.60, Format::RGBA_PLANAR, Format::BGRA, {kMerge, cv::COLOR_RGBA2BGRA}},
    {"P6", Floor::Chain, 0.75, 0.75, Format::RGB_PLANAR, Format::RGBA, {kMerge, cv::COLOR_RGB2RGBA}},
    {"P6", Floor::Chain, 0.75, 0.75, Format::RGB_PLANAR, Format::BGRA, {kMerge, cv::COLOR_RGB2BGRA}},

    {"P7", Floor::Copy, 1.05, 1.05, Format::RGB_PLANAR, Format::BGR_PLANAR, {}},
    {"P7", Floor::Copy, 1.05, 1.05, Format::RGBA_PLANAR, Format::BGR_PLANAR, {}},
    {"P7", Floor::Copy, 1.05, 1.05, Format::RGB_PLANAR, Format::RGBA_PLANAR, {}},
    {"P7", Floor::Copy, 0.95, 0.95, Format::MONO, Format::RGB_PLANAR, {}},
    {"P7", Floor::Copy, 0.95, 0.95, Format::MONO, Format::BGRA_PLANAR, {}},

    {"P8", Floor::Chain, 0.75, 0.55, Format::RGB_PLANAR, Format::MONO, {kMerge, cv::COLOR_RGB2GRAY}},
    {"P8", Floor::Chain, 0.75, 0.55, Format::BGRA_PLANAR, Format::MONO, {kMerge, cv::COLOR_BGRA2GRAY}},
};

constexpr FrameSize kTinySize{"320 x 240", 320, 240};
/// One call takes so little time there that its overhead may show.
constexpr double kTinyOneCallLimit = 1.15;

/// One step of a straightforward implementation: a fresh matrix, then a copy of its bytes into an image's.
std::vector<unsigned char> applyStep(const cv::Mat& input, int step, int height) {
    cv::Mat output;
    std::vector<cv::Mat> planes;
    switch (step) {
    case kSplit:
        cv::split(input, planes);
        cv::vconcat(planes, output);
        break;
    case kMerge:
        for (int begin = 0; begin < input.rows; begin += height) {
            planes.push_back(input.rowRange(begin, begin + height));
        }
        cv::merge(planes, output);
        break;
    default:
        cv::cvtColor(input, output, step);
    }
    return {output.datastart, output.dataend};
}

std::vector<unsigned char> applyChain(Image& source, const std::vector<int>& steps) {
    const auto width = static_cast<int>(source.getWidth());
    const auto height = static_cast<int>(source.getHeight());
    cv::Mat samples = matrixOf(source);
    std::vector<unsigned char> bytes;
    for (const int step : steps) {
        bytes = applyStep(samples, step, height);
        // The result of a step that another one follows is interleaved.
        const auto channels =
            static_cast<int>(bytes.size() / (samples.elemSize1() * source.getWidth() * source.getHeight()));
        samples = cv::Mat(height, width, CV_MAKETYPE(samples.depth(), channels), bytes.data());
    }
    return bytes;
}

/// Frames that both variants of a claim read and write: the addresses of memory affect the speed more than the variants
/// differ.
struct Frames {
    explicit Frames(const FrameKind& source, const FrameKind& result)
        : sources([&] { return randomFrame(source); }), results([&] { return randomFrame(result); }) {}

    Rotation<std::unique_ptr<Image>> sources;
    Rotation<std::unique_ptr<Image>> results;
};
using SharedFrames = std::shared_ptr<Frames>;

Variant ours(const SharedFrames& frames, Format to) {
    return {[frames, to] {
        std::unique_ptr<Image>& result = frames->results.next();
        result.reset(); // first, to free its memory, like an application that releases the oldest frame
        result = convertImage(frames->sources.next(), to);
    }};
}

Variant oneCall(const SharedFrames& frames, int code) {
    return {[frames, code] {
        cv::Mat result = matrixOf(*frames->results.next());
        cv::cvtColor(matrixOf(*frames->sources.next()), result, code);
        benchmark::ClobberMemory();
    }};
}

Variant twoCalls(const SharedFrames& frames, int code) {
    return {[frames, code, colors = cv::Mat()]() mutable {
        const cv::Mat source = matrixOf(*frames->sources.next());
        cv::cvtColor(source, colors, code);
        const cv::Mat result = matrixOf(*frames->results.next());
        std::vector<cv::Mat> planes;
        for (int begin = 0; begin < result.rows; begin += source.rows) {
            planes.push_back(result.rowRange(begin, begin + source.rows));
        }
        cv::split(colors, planes);
        benchmark::ClobberMemory();
    }};
}

Variant chain(const SharedFrames& frames, const std::vector<int>& steps) {
    auto results = std::make_shared<Rotation<std::vector<unsigned char>>>([] { return std::vector<unsigned char>(); });
    return {[frames, results, steps] {
        std::vector<unsigned char>& result = results->next();
        result = {};
        result = applyChain(*frames->sources.next(), steps);
    }};
}

Variant copyOfResult(const SharedFrames& frames, const FrameKind& source, const FrameKind& result) {
    const std::size_t bytes = result.bytes();
    // In the same memory, if that is large enough.
    const SharedFrames copied = source.bytes() >= bytes ? frames : std::make_shared<Frames>(result, result);
    return {[frames, copied, bytes] {
        std::memcpy(frames->results.next()->getDataAddress(), copied->sources.next()->getDataAddress(), bytes);
        benchmark::ClobberMemory();
    }};
}

std::string conversionName(const FrameKind& source, Format to) {
    return getFormatName(source.format) + " to " + getFormatName(to) + ", " + source.size.name + ", " +
           std::to_string(source.bitDepth) + " bit";
}

/// Reads and writes half the bytes of source and result each: the least that any conversion has to do.
Variant movedBytes(const FrameKind& source, const FrameKind& result) {
    using Buffers = Rotation<std::vector<unsigned char>>;
    const std::size_t bytes = (source.bytes() + result.bytes()) / 2;
    const auto make = [bytes] { return std::vector<unsigned char>(bytes, 1); };
    return {[bytes, from = std::make_shared<Buffers>(make), to = std::make_shared<Buffers>(make)] {
        std::memcpy(to->next().data(), from->next().data(), bytes);
        benchmark::ClobberMemory();
    }};
}

/// Times are compared only if the results are equal.
void requireEqualResults(const ConversionGoal& goal, const FrameKind& kind) {
    const std::unique_ptr<Image> source = randomFrame(kind);
    const std::unique_ptr<Image> converted = convertImage(source, goal.to);
    if (converted->getData() != applyChain(*source, goal.steps)) {
        throw std::logic_error("The conversion and the calls that it is compared with give different results.");
    }
}

std::pair<Variant, Variant> makeVariants(const ConversionGoal& goal, const FrameKind& source) {
    const FrameKind result{source.size, source.bitDepth, goal.to};
    const auto frames = std::make_shared<Frames>(source, result);
    switch (goal.floor) {
    case Floor::OneCall:
        requireEqualResults(goal, source);
        return {oneCall(frames, goal.steps.front()), ours(frames, goal.to)};
    case Floor::TwoCalls:
        requireEqualResults(goal, source);
        return {twoCalls(frames, goal.steps.front()), ours(frames, goal.to)};
    case Floor::Chain:
        requireEqualResults(goal, source);
        return {chain(frames, goal.steps), ours(frames, goal.to)};
    default:
        return {copyOfResult(frames, source, result), ours(frames, goal.to)};
    }
}

/// Every conversion of one depth against moving its bytes, and all of them together; in the short form one of each
/// kind.
void addMovingClaims(Scope scope, unsigned bits, std::vector<Claim>& claims) {
    const std::vector<Format> sources{Format::MONO, Format::BAYER_GRBG, Format::RGB, Format::BGRA, Format::BGR_PLANAR};
    const std::vector<Format> targets{Format::MONO, Format::BGR, Format::RGBA_PLANAR};
    const auto counts = [&](Format format, const std::vector<Format>& chosen) {
        return scope == Scope::Full || std::find(chosen.begin(), chosen.end(), format) != chosen.end();
    };
    const auto ratios = std::make_shared<std::vector<double>>();
    for (std::size_t i = 0; i < kFormats.size(); ++i) {
        for (std::size_t k = 0; k < kFormats.size(); ++k) {
            const auto from = static_cast<Format>(i), to = static_cast<Format>(k);
            if (!conversionExists(from, to) || !counts(from, sources) || !counts(to, targets)) {
                continue;
            }
            const FrameKind source{kMediumSize, bits, from}, result{kMediumSize, bits, to};
            claims.push_back({"P25", conversionName(source, to), "moving its bytes", 2.0, [source, result] {
                                  return std::pair{movedBytes(source, result),
                                                   ours(std::make_shared<Frames>(source, result), result.format)};
                              }});
            claims.back().collect = [ratios](double ratio) { ratios->push_back(ratio); };
        }
    }
    claims.push_back(countingClaim("P25", "mean of conversions, " + std::to_string(bits) + " bit", "moving its bytes",
                                   1.25, [ratios] {
                                       const auto sum = std::accumulate(ratios->begin(), ratios->end(), 0.0);
                                       return ratios->empty() ? 0 : sum / static_cast<double>(ratios->size());
                                   }));
}

} // namespace

std::vector<Claim> conversionClaims(Scope scope) {
    std::vector<FrameSize> sizes{kTinySize, kMediumSize};
    if (scope == Scope::Full) {
        sizes.push_back(kLargeSize);
    }
    std::vector<Claim> claims;
    for (const ConversionGoal& goal : kConversions) {
        for (const FrameSize& size : sizes) {
            const bool tiny = size.width == kTinySize.width;
            if (tiny && goal.goal != std::string("P1")) {
                continue;
            }
            for (const unsigned bits : {8U, 16U}) {
                const double limit = bits == 8 ? goal.limit8 : goal.limit16;
                if (limit == 0) {
                    continue;
                }
                const FrameKind kind{size, bits, goal.from};
                claims.push_back({goal.goal, conversionName(kind, goal.to),
                                  kFloorNames[static_cast<std::size_t>(goal.floor)], tiny ? kTinyOneCallLimit : limit,
                                  [&goal, kind] { return makeVariants(goal, kind); }});
            }
        }
    }
    for (const unsigned bits : {8U, 16U}) {
        addMovingClaims(scope, bits, claims);
    }
    return claims;
}

} // namespace Benchmarks
