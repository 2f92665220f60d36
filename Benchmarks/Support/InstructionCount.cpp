// SPDX-License-Identifier: Apache-2.0

#include "Support/InstructionCount.h"

#include <cmath>
#include <fstream>
#include <stdexcept>

namespace Benchmarks {

/// callgrind refers to it by name, see scripts/bench.
[[gnu::noipa]] void countedRuns(const Variant& variant, int runs) {
    for (int i = 0; i < runs; ++i) {
        variant.run();
    }
}

namespace {

/// Shorter runs are repeated, to cover all buffers and tables used in turn.
constexpr double kFewestInstructions = 1e6;

} // namespace

bool InstructionCounter::counts(const Claim& claim) {
    return claim.make && claim.timing == Timing::ComputingThread;
}

InstructionCount InstructionCounter::count(const Claim& claim) {
    const auto [floor, ours] = claim.make();
    return {instructionsOfPiece(floor), instructionsOfPiece(ours)};
}

double InstructionCounter::instructionsOfPiece(const Variant& variant) {
    variant.prepare();
    const double once = countRuns(variant, 1); // warms it up as well
    const int runs = static_cast<int>(std::ceil(kFewestInstructions / once));
    return countRuns(variant, runs) / (runs * variant.pieces);
}

double InstructionCounter::countRuns(const Variant& variant, int runs) {
    countedRuns(variant, runs);
    std::ifstream dump(m_Dumps + "." + std::to_string(++m_NumberOfDumps));
    const std::string key = "totals: ";
    for (std::string line; std::getline(dump, line);) {
        if (line.rfind(key, 0) == 0) {
            return std::stod(line.substr(key.size()));
        }
    }
    throw std::runtime_error("Instructions are counted under callgrind only: use scripts/bench --instructions.");
}

} // namespace Benchmarks
