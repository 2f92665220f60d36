// SPDX-License-Identifier: Apache-2.0

#include "Support/RatioBenchmark.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>

#include <time.h>

#include "Support/Cores.h"

namespace Benchmarks {

namespace {

/// Shorter times would measure the clock and the scheduler.
constexpr double kShortestTimedSeconds = 0.01;
/// What the slower of two very different variants may take longer than once.
constexpr double kLongestTimedSeconds = 0.2;

/// The time of a clock in seconds. CPU time of the calling thread excludes the time of other programs.
double secondsOn(Timing timing) {
    timespec time{};
    clock_gettime(timing == Timing::ComputingThread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double secondsOf(const Variant& variant, int runs, Timing timing) {
    variant.prepare();
    double parts = 0;
    const double begin = secondsOn(timing);
    for (int i = 0; i < runs; ++i) {
        variant.run();
        if (variant.partSeconds) {
            parts += variant.partSeconds();
        }
    }
    return variant.partSeconds ? parts : secondsOn(timing) - begin;
}

/// How often a variant is run per round.
struct Runs {
    int enough; ///< together they take long enough to be timed
    int most;   ///< together they take kLongestTimedSeconds
};

/// Finds out how long a variant takes. Also warms it up.
Runs runsPerRound(const Variant& variant, Timing timing) {
    int runs = 1;
    double seconds = secondsOf(variant, runs, timing);
    while (seconds < kShortestTimedSeconds) {
        runs *= 2;
        seconds = secondsOf(variant, runs, timing);
    }
    return {runs, static_cast<int>(std::ceil(runs * kLongestTimedSeconds / seconds))};
}

} // namespace

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Variant selfTimed(double pieces, const std::function<double()>& secondsOfPiece) {
    const auto seconds = std::make_shared<double>();
    Variant variant;
    variant.run = [=] { *seconds = pieces * secondsOfPiece(); };
    variant.pieces = pieces;
    variant.partSeconds = [seconds] { return *seconds; };
    return variant;
}

Claim countingClaim(const std::string& goal, const std::string& what, const std::string& unit, double limit,
                    const std::function<double()>& count) {
    return {goal, what, unit, limit, nullptr, Timing::ComputingThread, count};
}

Measurement measure(const Claim& claim, int rounds) {
    if (claim.count) {
        return {0, 0, claim.count()};
    }
    std::optional<PinnedToOneCore> pinned;
    if (claim.timing == Timing::Wall) {
        pinned.emplace();
    }
    const auto [floor, ours] = claim.make();
    const std::array<const Variant*, 2> variants{&floor, &ours};
    const std::array<Runs, 2> known{runsPerRound(floor, claim.timing), runsPerRound(ours, claim.timing)};
    // Both do the same amount per round, so that the cache content left by the other one affects both equally.
    const double pieces = std::max(known[0].enough * floor.pieces, known[1].enough * ours.pieces);
    std::array<std::vector<double>, 2> seconds;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        for (int turn = 0; turn < 2; ++turn) {
            const auto i = static_cast<std::size_t>((round + turn) % 2);
            const int runs = std::min(static_cast<int>(std::ceil(pieces / variants[i]->pieces)), known[i].most);
            seconds[i].push_back(secondsOf(*variants[i], runs, claim.timing) / (runs * variants[i]->pieces));
        }
        ratios.push_back(seconds[1].back() / seconds[0].back());
    }
    const double ratio = median(ratios);
    claim.collect(ratio);
    return {median(seconds[0]), median(seconds[1]), ratio};
}

} // namespace Benchmarks
