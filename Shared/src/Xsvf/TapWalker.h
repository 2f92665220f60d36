// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Xsvf/JtagPort.h"

namespace Utilities {

/// States of a TAP controller (IEEE 1149.1), numbered as in XSVF files.
enum class TapState : std::uint8_t {
    Reset = 0,
    RunTest = 1,
    SelectDr = 2,
    CaptureDr = 3,
    ShiftDr = 4,
    Exit1Dr = 5,
    PauseDr = 6,
    Exit2Dr = 7,
    UpdateDr = 8,
    SelectIr = 9,
    CaptureIr = 10,
    ShiftIr = 11,
    Exit1Ir = 12,
    PauseIr = 13,
    Exit2Ir = 14,
    UpdateIr = 15
};
constexpr std::uint8_t kTapStates = 16;

/// Moves a TAP controller from state to state and tracks its present state.
class TapWalker {
public:
    explicit TapWalker(JtagPort& port) : m_Port(port) {}

    TapState state() const { return m_State; }
    /// Records that a shift left its state with the last bit.
    void leftShift();

    /// Sends six pulses with TMS high, in any state.
    void reset();
    /// Moves to a state. If the target is the pause state in which it is, leaves it and returns.
    /// @return false, without a pulse, for a second exit state from any state other than its pause state
    bool goTo(TapState target);

private:
    JtagPort& m_Port;
    TapState m_State = TapState::Reset;
};

} // namespace Utilities
