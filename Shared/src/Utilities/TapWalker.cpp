#include "Utilities/TapWalker.h"

#include <array>

namespace Utilities {

namespace {

/// From one state: where TMS 0 and TMS 1 lead, and for which targets, from the first to the last, TMS 0 is taken.
struct Step {
    TapState onZero;
    TapState onOne;
    std::uint8_t firstZeroTarget;
    std::uint8_t lastZeroTarget;
};

constexpr std::array<Step, kTapStates> kSteps{{
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
    if ((target == TapState::Exit2Dr && m_State != TapState::PauseDr) ||
        (target == TapState::Exit2Ir && m_State != TapState::PauseIr)) {
        return false;
    }
    if (target == m_State && (target == TapState::PauseDr || target == TapState::PauseIr)) {
        step(target);
    }
    while (m_State != target) {
        step(target);
    }
    return true;
}

void TapWalker::step(TapState target) {
    const Step& way = kSteps[static_cast<std::uint8_t>(m_State)];
    const auto number = static_cast<std::uint8_t>(target);
    const bool tms = number < way.firstZeroTarget || number > way.lastZeroTarget;
    m_Port.pulse(tms);
    m_State = tms ? way.onOne : way.onZero;
}

} // namespace Utilities
