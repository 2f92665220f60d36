// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks {

/// One implementation of a piece of work.
struct Variant {
    std::function<void()> run;
    /// The number of pieces per run; times are compared per piece.
    double pieces = 1;
    /// Prepares the timed runs; not timed itself.
    std::function<void()> prepare = [] {};
    /// If only a part of each run counts: returns the time of that part in the last run. Empty if the whole run counts.
    std::function<double()> partSeconds = {};
};

/// Makes a variant that times itself.
/// @param pieces of a run
/// @param secondsOfPiece runs, and returns the mean time of a piece
Variant selfTimed(double pieces, const std::function<double()>& secondsOfPiece);

/// The clock that counts: CPU time of the computing thread, or wall time if several threads work together. For wall
/// time the calling thread is pinned to one core; the others move to another, see moveToOtherCore(). Wall time on all
/// cores leaves the threads where the system puts them.
enum class Timing { ComputingThread, Wall, WallOnAllCores };

/// A goal: our implementation takes at most @p limit times as long as the floor.
struct Claim {
    std::string goal; ///< number of the goal, such as "P1"
    std::string what;
    std::string floor;
    double limit; ///< largest ratio that meets the goal
    /// Makes the floor and our implementation, with the buffers that both rotate through. Called when the claim is
    /// measured.
    std::function<std::pair<Variant, Variant>()> make;
    Timing timing = Timing::ComputingThread;
    /// For a goal that is not a time: returns the count per call, used in place of the ratio.
    std::function<double()> count = nullptr;
    /// Gets the ratio, for a goal about several of them.
    std::function<void(double)> collect = [](double) {};
};

/// Makes a goal that is not a time.
/// @param unit the unit of the count, in place of a floor
Claim countingClaim(const std::string& goal, const std::string& what, const std::string& unit, double limit,
                    const std::function<double()>& count);

struct Measurement {
    double floorSeconds; ///< per piece, like all times here; 0 for counts
    double ourSeconds;
    double ratio;
};

double median(std::vector<double> values);

/// Runs floor and ours interleaved, in alternating order, and takes the medians over the rounds: of the times, and of
/// each round's ratio, which other load on the machine affects least.
Measurement measure(const Claim& claim, int rounds);

} // namespace Benchmarks
