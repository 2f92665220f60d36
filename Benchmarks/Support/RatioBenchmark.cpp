#include "Support/RatioBenchmark.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <time.h>

namespace Benchmarks {

namespace {

/// Shorter times would be the clock's and the scheduler's.
constexpr double kShortestTimedSeconds = 0.01;

/// Time that the calling thread computed: what other programs take in between does not count.
double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double secondsOf(const Variant& variant, int runs) {
    variant.prepare();
    const double begin = threadSeconds();
    for (int i = 0; i < runs; ++i) {
        variant.run();
    }
    return threadSeconds() - begin;
}

/// How many pieces take long enough to be timed together. Warms the variant up, too.
double piecesPerRound(const Variant& variant) {
    int runs = 1;
    while (secondsOf(variant, runs) < kShortestTimedSeconds) {
        runs *= 2;
    }
    return runs * variant.pieces;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

Measurement measure(const Claim& claim, int rounds) {
    const auto [floor, ours] = claim.make();
    const std::array<const Variant*, 2> variants{&floor, &ours};
    // Both do as much in a round, so that what the other one left in the cache hits both alike.
    const double pieces = std::max(piecesPerRound(floor), piecesPerRound(ours));
    std::array<std::vector<double>, 2> seconds;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        for (int turn = 0; turn < 2; ++turn) {
            const auto i = static_cast<std::size_t>((round + turn) % 2);
            const int runs = static_cast<int>(std::ceil(pieces / variants[i]->pieces));
            seconds[i].push_back(secondsOf(*variants[i], runs) / (runs * variants[i]->pieces));
        }
        ratios.push_back(seconds[1].back() / seconds[0].back());
    }
    return {median(seconds[0]), median(seconds[1]), median(ratios)};
}

} // namespace Benchmarks
