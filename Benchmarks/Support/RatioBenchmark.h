// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks {

/// One way of doing a piece of work.
struct Variant {
    std::function<void()> run;
    /// How many pieces one run does: times are compared per piece.
    double pieces = 1;
    /// What must be in place before runs are timed; not timed itself.
    std::function<void()> prepare = [] {};
    /// Where only a part of each run counts: how long it took in the last run. Empty where the whole run counts.
    std::function<double()> partSeconds = {};
};

/// Whose time counts: that of the computing thread, or that of the wall where several threads work together. For the
/// latter the calling thread is pinned to one core; the others move to another, see moveToOtherCore().
enum class Timing { ComputingThread, Wall };

/// A goal: our way takes at most so many times as long as the floor.
struct Claim {
    std::string goal; ///< number of the goal, such as "P1"
    std::string what;
    std::string floor;
    double limit; ///< largest ratio that meets the goal
    /// Makes the floor and our way, with the buffers that both rotate through; called when the claim is measured.
    std::function<std::pair<Variant, Variant>()> make;
    Timing timing = Timing::ComputingThread;
    /// For a goal that is no time: counts something per call, which stands for the ratio.
    std::function<double()> count = nullptr;
};

/// A goal that is no time.
/// @param unit what is counted, in place of a floor
Claim countingClaim(const std::string& goal, const std::string& what, const std::string& unit, double limit,
                    const std::function<double()>& count);

struct Measurement {
    double floorSeconds; ///< of one piece, as all times here; 0 where something is counted
    double ourSeconds;
    double ratio;
};

double median(std::vector<double> values);

/// Runs floor and ours interleaved, in turning order, and takes medians over the rounds: of the times, and of each
/// round's ratio, which other load on the machine changes least.
Measurement measure(const Claim& claim, int rounds);

} // namespace Benchmarks
