// SPDX-License-Identifier: Apache-2.0

#include "Support/Report.h"

#include <array>
#include <cstdio>

namespace Benchmarks {

namespace {

/// A time with three digits and a suitable unit.
std::string timeText(double seconds) {
    if (seconds == 0) {
        return "-";
    }
    struct Unit {
        const char* name;
        double seconds;
    };
    constexpr Unit kUnits[] = {{"s", 1}, {"ms", 1e-3}, {"us", 1e-6}, {"ns", 1e-9}};
    const Unit* unit = kUnits;
    while (seconds < unit->seconds && unit + 1 != std::end(kUnits)) {
        ++unit;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g %s", seconds / unit->seconds, unit->name);
    return text.data();
}

} // namespace

void Report::add(const Claim& claim, const Measurement& measurement) {
    const bool met = measurement.ratio <= claim.limit;
    if (!m_AsJson) {
        if (m_Claims.empty()) {
            std::printf("%-5s%-46s%-18s%10s%10s%8s%7s\n", "goal", "what", "floor", "floor", "ours", "ratio", "limit");
        }
        std::printf("%-5s%-46s%-18s%10s%10s%8.2f%7.2f  %s\n", claim.goal.c_str(), claim.what.c_str(),
                    claim.floor.c_str(), timeText(measurement.floorSeconds).c_str(),
                    timeText(measurement.ourSeconds).c_str(), measurement.ratio, claim.limit, met ? "met" : "NOT MET");
        std::fflush(stdout);
    }
    m_Claims.push_back({{"goal", claim.goal},
                        {"what", claim.what},
                        {"floor", claim.floor},
                        {"floorSeconds", measurement.floorSeconds},
                        {"ourSeconds", measurement.ourSeconds},
                        {"ratio", measurement.ratio},
                        {"limit", claim.limit},
                        {"met", met}});
}

void Report::add(const Claim& claim, const InstructionCount& count) {
    const double ratio = count.ours / count.floor;
    if (!m_AsJson) {
        if (m_Instructions.empty()) {
            std::printf("%-5s%-46s%-22s%14s%14s%8s\n", "goal", "instructions", "floor", "floor", "ours", "ratio");
        }
        std::printf("%-5s%-46s%-22s%14.1f%14.1f%8.2f\n", claim.goal.c_str(), claim.what.c_str(), claim.floor.c_str(),
                    count.floor, count.ours, ratio);
        std::fflush(stdout);
    }
    m_Instructions.push_back({{"goal", claim.goal},
                              {"what", claim.what},
                              {"floor", claim.floor},
                              {"floorInstructions", count.floor},
                              {"ourInstructions", count.ours},
                              {"ratio", ratio}});
}

void Report::add(const ScalingResult& result) {
    if (!m_AsJson) {
        if (m_Scaling.empty()) {
            std::printf("\n%-40s%10s%12s%12s\n", "with growing number", "number", "time", "per item");
        }
        std::printf("%-40s%10.0f%12s%12s\n", result.what.c_str(), result.items, timeText(result.seconds).c_str(),
                    timeText(result.seconds / result.items).c_str());
        std::fflush(stdout);
    }
    m_Scaling.push_back({{"what", result.what}, {"items", result.items}, {"seconds", result.seconds}});
}

void Report::finish() const {
    if (m_AsJson) {
        std::puts(nlohmann::ordered_json{{"claims", m_Claims}, {"instructions", m_Instructions}, {"scaling", m_Scaling}}
                      .dump(2)
                      .c_str());
    }
}

bool measureInto(Report& report, const Claim& claim, double usualRatio, const MeasuringForm& form) {
    bool tolerated = false;
    for (int attempt = 0; attempt < form.attempts && !tolerated; ++attempt) {
        const Measurement measurement = measure(claim, form.rounds);
        report.add(claim, measurement);
        tolerated = measurement.ratio <= usualRatio * form.tolerance;
    }
    return tolerated;
}

} // namespace Benchmarks
