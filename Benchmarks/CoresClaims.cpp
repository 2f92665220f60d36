// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include "Claims.h"
#include "Imaging/Conversion.h"
#include "Imaging/FormatTable.h"
#include "Support/Frames.h"

namespace Benchmarks {

namespace {

using namespace std::chrono_literals;
using Imaging::IMAGE_FORMAT;

/// Of one thread's time. A perfect share would be 0.5.
constexpr double kTwoThreadsLimit = 0.6;
/// In a stream, the threads of a conversion sleep between two frames.
constexpr auto kRest = 5ms;

struct SharedConversion {
    IMAGE_FORMAT from;
    IMAGE_FORMAT to;
    unsigned bits;
};

constexpr SharedConversion kShared[] = {{IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGR, 8},
                                        {IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGR, 16},
                                        {IMAGE_FORMAT::BAYER_BGGR, IMAGE_FORMAT::MONO, 8},
                                        {IMAGE_FORMAT::RGB, IMAGE_FORMAT::MONO, 8},
                                        {IMAGE_FORMAT::RGB_PLANAR, IMAGE_FORMAT::RGB, 8}};

/// Converts frames of a kind on one thread, and on two.
std::pair<Variant, Variant> onOneAndTwoThreads(const FrameKind& kind, IMAGE_FORMAT to, std::chrono::milliseconds rest) {
    const auto frames =
        std::make_shared<Rotation<std::unique_ptr<Imaging::Image>>>([kind] { return randomFrame(kind); });
    const auto on = [=](int threads) {
        return selfTimed(1, [=] {
            std::this_thread::sleep_for(rest);
            cv::setNumThreads(threads);
            const auto begin = std::chrono::steady_clock::now();
            benchmark::DoNotOptimize(convertImage(*frames->next(), to));
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
            cv::setNumThreads(1); // as other measurements expect
            return time.count();
        });
    };
    return {on(1), on(2)};
}

} // namespace

std::vector<Claim> coresClaims(Scope scope) {
    std::vector<Claim> claims;
    if (scope == Scope::Short) {
        return claims; // other programs need the second core
    }
    for (const auto rest : {0ms, kRest}) {
        for (const SharedConversion& shared : kShared) {
            const FrameKind kind{kLargeSize, shared.bits, shared.from};
            claims.push_back({"P34",
                              getFormatName(shared.from) + " to " + getFormatName(shared.to) + ", 5 MP, " +
                                  std::to_string(shared.bits) + " bit" + (rest == 0ms ? "" : ", rested"),
                              "one thread", kTwoThreadsLimit, [=] { return onOneAndTwoThreads(kind, shared.to, rest); },
                              Timing::WallOnAllCores});
        }
    }
    return claims;
}

} // namespace Benchmarks
