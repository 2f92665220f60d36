// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Utilities/Xsvf.h"
#include "Xsvf/JtagPort.h"
#include "Xsvf/TapWalker.h"
#include "Xsvf/XsvfValue.h"

namespace Utilities {

/// One play of an XSVF file: reads its commands and drives a JTAG port. Bytes beyond the end of the file read as 0xFF.
class XsvfPlayer {
public:
    enum class Comparison { Real, AlwaysEqual };

    /// @param data, port, report, progress, isCameraGone must outlive the player
    XsvfPlayer(const std::vector<unsigned char>& data, JtagPort& port, Comparison comparison, XsvfReport& report,
               const std::function<void(double)>& progress, const std::function<bool()>& isCameraGone);

    /// Plays until the command that completes the file, the first error, or the loss of the camera, and fills the
    /// report.
    void play();
    /// Updates the report with the failures of the port.
    void countFailedTransfers();

private:
    using Handler = void (XsvfPlayer::*)();

    enum class End { Stay, EndState };

    /// One shift of bits through a register of the TAP.
    struct Shift {
        TapState through;
        TapState end;
        std::size_t bits;
        XsvfValue* captured = nullptr;       ///< null: the captured bits are not needed
        const XsvfValue* expected = nullptr; ///< null: nothing is compared
        const XsvfValue* mask = nullptr;     ///< null: all bits are compared
        std::uint32_t runTestTime = 0;       ///< microseconds
        unsigned int maximumRepeat = 0;
    };

    static Handler handlerOf(std::uint8_t command);

    // Reading.
    std::uint8_t readByte() { return m_Position < m_Size ? m_Data[m_Position++] : 0xFF; }
    std::uint32_t readNumber(int bytes);
    void readValue(XsvfValue& value, std::size_t length);
    void reportProgress() {
        if (m_Position >= m_NextProgress) {
            reportPosition();
        }
    }
    void reportPosition();
    /// Reports progress at an unchanged position, so that a play can be ended there as well.
    /// @return whether the play continues
    bool reportAgain();

    // Commands.
    void complete();
    void readTdoMask();
    void shiftInstruction();
    void shiftLongInstruction();
    void shiftData();
    void setRunTestTime();
    void setMaximumRepeat();
    void setShiftLength();
    void shiftDataExpecting();
    void setMasks();
    void shiftIncremented();
    template <End end>
    void shiftPiece();
    template <End end>
    void shiftPieceExpecting();
    void enterState();
    void setEndInstructionState();
    void setEndDataState();
    void skipComment();
    void waitInState();

    // Helpers of the commands.
    void shiftInstruction(std::size_t bits);
    void shiftComparing();
    void shiftPiece(End end, const XsvfValue* expected);
    void setEndState(TapState& state, TapState pause);
    void shift(const Shift& shift);
    bool isAsExpected(const Shift& shift) const;
    void nextIncrement();
    void goTo(std::uint8_t state);
    void wait(std::uint32_t microseconds);
    void fail(XsvfError error) {
        m_Report.error = error;
        m_Ended = true;
    }

    const unsigned char* const m_Data;
    const std::size_t m_Size;
    JtagPort& m_Port;
    const Comparison m_Comparison;
    XsvfReport& m_Report;
    const std::function<void(double)>& m_Progress;
    const std::function<bool()>& m_IsCameraGone;

    std::size_t m_Position = 0;
    std::size_t m_NextProgress; ///< the position at which progress is reported
    bool m_Ended = false;       ///< complete, or failed
    TapWalker m_Tap;
    TapState m_EndInstruction = TapState::RunTest;
    TapState m_EndData = TapState::RunTest;
    unsigned int m_MaximumRepeat = 0;
    std::uint32_t m_RunTestTime = 0; // microseconds
    std::size_t m_ShiftBits = 0;
    std::size_t m_ShiftBytes = 0;
    XsvfValue m_Tdi;
    XsvfValue m_ExpectedTdo;
    XsvfValue m_CapturedTdo;
    XsvfValue m_TdoMask;
    XsvfValue m_AddressMask;
    XsvfValue m_DataMask;
    XsvfValue m_NextData;
};

} // namespace Utilities
