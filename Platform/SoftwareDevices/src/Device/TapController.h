// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// A test access port (IEEE 1149.1) with the registers IDCODE, BYPASS and one for data, which captures the value of its
/// last update. It starts in test-logic-reset. Not thread-safe.
class TapController {
public:
    TapController(std::uint32_t idCode, std::uint32_t dataBits);

    /// Applies a rising edge of TCK.
    /// @return the previous level of TDO; a line that is not driven reads 1
    bool rise(bool tms, bool tdi);
    /// Applies a falling edge of TCK: updates and reset take effect.
    void fall();

    TapState state() const { return m_State; }
    /// The data register, least significant byte first.
    std::vector<std::uint8_t> data() const;

private:
    using Bits = std::vector<std::uint8_t>; ///< one per byte, the one nearest to TDO first

    void capture(Bits bits);
    Bits captured() const;

    const Bits m_IdCode;
    Bits m_Data;
    std::uint8_t m_Instruction = kJtagIdCode;
    TapState m_State = TapState::TestLogicReset;
    Bits m_Shifting;          ///< the stages between TDI and TDO
    std::size_t m_Output = 0; ///< the stage that drives TDO; the ring rotates instead of the bits
};

} // namespace SoftwareDevices
