// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Support/RatioBenchmark.h"

namespace Benchmarks {

/// Instructions of one piece.
struct InstructionCount {
    double floor;
    double ours;
};

/// Counts instructions under callgrind: what it dumps after each call of countedRuns(), for whose duration it collects,
/// is read from its files. Unlike times, counts are the same whatever else the machine does.
class InstructionCounter {
public:
    /// @param dumps what callgrind's files are called, without the number at the end
    explicit InstructionCounter(std::string dumps) : m_Dumps(std::move(dumps)) {}

    /// Whether all that counts happens on the calling thread.
    static bool counts(const Claim& claim);
    /// @throws std::runtime_error  callgrind does not count
    InstructionCount count(const Claim& claim);

private:
    double countRuns(const Variant& variant, int runs);
    double instructionsOfPiece(const Variant& variant);

    std::string m_Dumps;
    int m_NumberOfDumps = 0;
};

} // namespace Benchmarks
