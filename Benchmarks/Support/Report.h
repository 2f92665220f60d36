// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Support/InstructionCount.h"
#include "Support/RatioBenchmark.h"

namespace Benchmarks {

/// The result of a plain benchmark for a number of items.
struct ScalingResult {
    std::string what;
    double items;
    double seconds;
};

/// Prints results as a table as they arrive, or all of them at the end as one JSON object.
class Report {
public:
    explicit Report(bool asJson) : m_AsJson(asJson) {}

    void add(const Claim& claim, const Measurement& measurement);
    void add(const Claim& claim, const InstructionCount& count);
    void add(const ScalingResult& result);
    void finish() const;

private:
    bool m_AsJson;
    nlohmann::ordered_json m_Claims = nlohmann::ordered_json::array();
    nlohmann::ordered_json m_Instructions = nlohmann::ordered_json::array();
    nlohmann::ordered_json m_Scaling = nlohmann::ordered_json::array();
};

/// How exactly goals are measured, and what is tolerated.
struct MeasuringForm {
    int rounds;
    double tolerance; ///< the ratio tolerated, as a multiple of the usual one
    int attempts;     ///< to be within tolerance: a disturbance passes, slow code stays slow
};
constexpr MeasuringForm kFullForm{21, 1, 1};
constexpr MeasuringForm kShortForm{3, 2, 3}; ///< for machines with other load

/// Measures a claim and reports it, for each attempt. Returns whether one of them was within tolerance.
bool measureInto(Report& report, const Claim& claim, double usualRatio, const MeasuringForm& form);

} // namespace Benchmarks
