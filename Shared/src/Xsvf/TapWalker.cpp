// SPDX-License-Identifier: Apache-2.0

#include "Xsvf/TapWalker.h"

#include <array>

namespace Utilities {

namespace {

/// For one state: the next states with TMS 0 and 1, and the first and the last target for which TMS 0 is chosen.
struct Step {
    TapState onZero;
    TapState onOne;
    std::uint8_t firstZeroTarget;
    std::uint8_t lastZeroTarget;
};

constexpr std::array<Step, kTapStates> kStateSteps{{
    {TapState::RunTest, TapState::Reset, 0, 15},     // Reset
    {TapState::RunTest, TapState::SelectDr, 1, 0},   // RunTest
    {TapState::CaptureDr, TapState::SelectIr, 0, 8}, // SelectDr
    {TapState::ShiftDr, TapState::Exit1Dr, 4, 4},    // CaptureDr
    {TapState::ShiftDr, TapState::Exit1Dr, 1, 0},    // ShiftDr
    {TapState::PauseDr, TapState::UpdateDr, 6, 6},   // Exit1Dr
    {TapState::PauseDr, TapState::Exit2Dr, 1, 0},    // PauseDr
    {TapState::ShiftDr, TapState::UpdateDr, 4, 4},   // Exit2Dr
    {TapState::RunTest, TapState::SelectDr, 1, 1},   // UpdateDr
    {TapState::CaptureIr, TapState::Reset, 0, 15},   // SelectIr
    {TapState::ShiftIr, TapState::Exit1Ir, 11, 11},  // CaptureIr
    {TapState::ShiftIr, TapState::Exit1Ir, 1, 0},    // ShiftIr
    {TapState::PauseIr, TapState::UpdateIr, 13, 13}, // Exit1Ir
    {TapState::PauseIr, TapState::Exit2Ir, 1, 0},    // PauseIr
    {TapState::ShiftIr, TapState::UpdateIr, 11, 11}, // Exit2Ir
    {TapState::RunTest, TapState::SelectDr, 1, 1},   // UpdateIr
}};

constexpr bool isPause(TapState state) {
    return state == TapState::PauseDr || state == TapState::PauseIr;
}

/// The levels of TMS that lead from one state to another, the first one in the lowest bit.
struct Path {
    bool exists = false;
    std::uint8_t length = 0;
    std::uint16_t tms = 0;
};

constexpr Path findPath(TapState from, TapState target) {
    if ((target == TapState::Exit2Dr && from != TapState::PauseDr) ||
        (target == TapState::Exit2Ir && from != TapState::PauseIr) || target == TapState::Reset) {
        return {};
    }
    Path path{true};
    const auto number = static_cast<std::uint8_t>(target);
    for (TapState state = from; state != target || (path.length == 0 && isPause(from)); ++path.length) {
        const Step& way = kStateSteps[static_cast<std::uint8_t>(state)];
        const bool tms = number < way.firstZeroTarget || number > way.lastZeroTarget;
        path.tms = static_cast<std::uint16_t>(path.tms | (tms ? 1U << path.length : 0U));
        state = tms ? way.onOne : way.onZero;
    }
    return path;
}

using Paths = std::array<std::array<Path, kTapStates>, kTapStates>;

constexpr Paths findPaths() {
    Paths paths{};
    for (std::uint8_t from = 0; from < kTapStates; ++from) {
        for (std::uint8_t target = 0; target < kTapStates; ++target) {
            paths[from][target] = findPath(TapState{from}, TapState{target});
        }
    }
    return paths;
}

constexpr Paths kPaths = findPaths(); // by start and target

} // namespace

void TapWalker::leftShift() {
    m_State = m_State == TapState::ShiftDr ? TapState::Exit1Dr : TapState::Exit1Ir;
}

void TapWalker::reset() {
    constexpr int kFurtherClocks = 5;
    m_Port.pulse(true);
    for (int clock = 0; clock < kFurtherClocks; ++clock) {
        m_Port.clock();
    }
    m_State = TapState::Reset;
}

bool TapWalker::goTo(TapState target) {
    if (target == TapState::Reset) {
        reset();
        return true;
    }
    const Path path = kPaths[static_cast<std::uint8_t>(m_State)][static_cast<std::uint8_t>(target)];
    if (!path.exists) {
        return false;
    }
    m_State = target;
    m_Port.pulses(path.tms, path.length);
    return true;
}

} // namespace Utilities
