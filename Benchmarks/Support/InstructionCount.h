// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Support/RatioBenchmark.h"

namespace Benchmarks {

/// Instructions per piece.
struct InstructionCount {
    double floor;
    double ours;
};

/// Counts instructions under callgrind, which collects during countedRuns() and dumps to a file after each call. Unlike
/// times, counts do not depend on other load.
class InstructionCounter {
public:
    /// @param dumps the names of callgrind's files, without the number at the end
    explicit InstructionCounter(std::string dumps) : m_Dumps(std::move(dumps)) {}

    /// Whether all work of a claim happens on the calling thread.
    static bool counts(const Claim& claim);
    /// @throws std::runtime_error  callgrind does not collect
    InstructionCount count(const Claim& claim);

private:
    double countRuns(const Variant& variant, int runs);
    double instructionsOfPiece(const Variant& variant);

    std::string m_Dumps;
    int m_NumberOfDumps = 0;
};

} // namespace Benchmarks
