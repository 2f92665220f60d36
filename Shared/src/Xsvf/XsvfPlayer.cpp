// SPDX-License-Identifier: Apache-2.0

#include "Xsvf/XsvfPlayer.h"

#include <algorithm>
#include <limits>

namespace Utilities {

XsvfPlayer::XsvfPlayer(const std::vector<unsigned char>& data, JtagPort& port, Comparison comparison,
                       XsvfReport& report, const std::function<void(double)>& progress,
                       const std::function<bool()>& isCameraGone)
    : m_Data(data.data()), m_Size(data.size()), m_Port(port), m_Comparison(comparison), m_Report(report),
      m_Progress(progress), m_IsCameraGone(isCameraGone),
      m_NextProgress(progress ? 0 : std::numeric_limits<std::size_t>::max()), m_Tap(port) {}

XsvfPlayer::Handler XsvfPlayer::handlerOf(std::uint8_t command) {
    static constexpr std::array<Handler, 0x18> kHandlers{
        &XsvfPlayer::complete,                           // 0x00 XCOMPLETE
        &XsvfPlayer::readTdoMask,                        // 0x01 XTDOMASK
        &XsvfPlayer::shiftInstruction,                   // 0x02 XSIR
        &XsvfPlayer::shiftData,                          // 0x03 XSDR
        &XsvfPlayer::setRunTestTime,                     // 0x04 XRUNTEST
        nullptr,                                         // 0x05
        nullptr,                                         // 0x06
        &XsvfPlayer::setMaximumRepeat,                   // 0x07 XREPEAT
        &XsvfPlayer::setShiftLength,                     // 0x08 XSDRSIZE
        &XsvfPlayer::shiftDataExpecting,                 // 0x09 XSDRTDO
        &XsvfPlayer::setMasks,                           // 0x0A XSETSDRMASKS
        &XsvfPlayer::shiftIncremented,                   // 0x0B XSDRINC
        &XsvfPlayer::shiftPiece<End::Stay>,              // 0x0C XSDRB
        &XsvfPlayer::shiftPiece<End::Stay>,              // 0x0D XSDRC
        &XsvfPlayer::shiftPiece<End::EndState>,          // 0x0E XSDRE
        &XsvfPlayer::shiftPieceExpecting<End::Stay>,     // 0x0F XSDRTDOB
        &XsvfPlayer::shiftPieceExpecting<End::Stay>,     // 0x10 XSDRTDOC
        &XsvfPlayer::shiftPieceExpecting<End::EndState>, // 0x11 XSDRTDOE
        &XsvfPlayer::enterState,                         // 0x12 XSTATE
        &XsvfPlayer::setEndInstructionState,             // 0x13 XENDIR
        &XsvfPlayer::setEndDataState,                    // 0x14 XENDDR
        &XsvfPlayer::shiftLongInstruction,               // 0x15 XSIR2
        &XsvfPlayer::skipComment,                        // 0x16 XCOMMENT
        &XsvfPlayer::waitInState,                        // 0x17 XWAIT
    };
    return command < kHandlers.size() ? kHandlers[command] : nullptr;
}

void XsvfPlayer::play() {
    m_Tap.reset();
    countFailedTransfers();
    while (!m_Ended) {
        if (m_Position == m_Size) {
            m_Report.dataEnded = true;
            fail(XsvfError::IllegalCommand);
            return;
        }
        m_Report.commandOffset = m_Position;
        ++m_Report.commandCount;
        const Handler handler = handlerOf(readByte());
        if (handler == nullptr) {
            fail(XsvfError::IllegalCommand);
            return;
        }
        (this->*handler)();
        countFailedTransfers();
        reportProgress();
    }
}

void XsvfPlayer::countFailedTransfers() {
    if (m_Port.failedTransfers() == m_Report.failedTransfers) {
        return;
    }
    if (m_Report.failedTransfers == 0) {
        m_Report.failedCommand = m_Report.commandCount;
        m_Report.failedOffset = m_Report.commandOffset;
    }
    m_Report.failedTransfers = m_Port.failedTransfers();
    if (!m_Report.cameraGone && m_IsCameraGone && m_IsCameraGone()) {
        m_Report.cameraGone = true;
        m_Ended = true;
    }
}

std::uint32_t XsvfPlayer::readNumber(int bytes) {
    std::uint32_t number = 0;
    for (int byte = 0; byte < bytes; ++byte) {
        number = number << 8 | readByte();
    }
    return number;
}

void XsvfPlayer::readValue(XsvfValue& value, std::size_t length) {
    value.setLength(length);
    const std::size_t available = std::min(length, m_Size - m_Position);
    std::copy_n(m_Data + m_Position, available, value.data());
    std::fill_n(value.data() + available, length - available, std::uint8_t{0xFF});
    m_Position += available;
}

void XsvfPlayer::reportPosition() {
    constexpr std::size_t kReports = 1000;
    m_NextProgress = m_Position + std::max<std::size_t>(m_Size / kReports, 1);
    m_Progress(static_cast<double>(m_Position) / static_cast<double>(m_Size));
}

bool XsvfPlayer::reportAgain() {
    countFailedTransfers();
    if (m_Progress) {
        reportPosition();
    }
    return !m_Ended;
}

void XsvfPlayer::complete() {
    m_Ended = true;
}

void XsvfPlayer::readTdoMask() {
    readValue(m_TdoMask, m_ShiftBytes);
}

void XsvfPlayer::shiftInstruction() {
    shiftInstruction(readByte());
}

void XsvfPlayer::shiftLongInstruction() {
    shiftInstruction(readNumber(2));
}

void XsvfPlayer::shiftInstruction(std::size_t bits) {
    const std::size_t bytes = (bits + 7) / 8;
    if (bytes > XsvfValue::kMaximumBytes) {
        fail(XsvfError::DataOverflow);
        return;
    }
    readValue(m_Tdi, bytes);
    Shift instruction{TapState::ShiftIr, m_EndInstruction, bits};
    instruction.runTestTime = m_RunTestTime;
    shift(instruction);
}

void XsvfPlayer::shiftData() {
    readValue(m_Tdi, m_ShiftBytes);
    shiftComparing();
}

void XsvfPlayer::setRunTestTime() {
    m_RunTestTime = readNumber(4);
}

void XsvfPlayer::setMaximumRepeat() {
    m_MaximumRepeat = readByte();
}

void XsvfPlayer::setShiftLength() {
    const std::uint64_t bits = readNumber(4);
    const std::uint64_t bytes = (bits + 7) / 8;
    if (bytes > XsvfValue::kMaximumBytes) {
        fail(XsvfError::DataOverflow);
        return;
    }
    m_ShiftBits = static_cast<std::size_t>(bits);
    m_ShiftBytes = static_cast<std::size_t>(bytes);
}

void XsvfPlayer::shiftDataExpecting() {
    readValue(m_Tdi, m_ShiftBytes);
    readValue(m_ExpectedTdo, m_ShiftBytes);
    shiftComparing();
}

void XsvfPlayer::setMasks() {
    readValue(m_AddressMask, m_ShiftBytes);
    readValue(m_DataMask, m_ShiftBytes);
}

void XsvfPlayer::shiftIncremented() {
    shiftData();
    if (m_Ended) {
        return;
    }
    const std::size_t dataBytes = (m_DataMask.countOnes() + 7) / 8;
    const unsigned int count = readByte();
    for (unsigned int shifts = 0; shifts < count && !m_Ended; ++shifts) {
        readValue(m_NextData, dataBytes);
        nextIncrement();
        shiftComparing();
        reportProgress();
    }
}

void XsvfPlayer::nextIncrement() {
    m_Tdi.add(m_AddressMask);
    std::size_t taken = 0;
    for (std::size_t index = 0; index < m_DataMask.length() * 8; ++index) {
        if (m_DataMask.bit(index)) {
            m_Tdi.setBit(index, m_NextData.bit(taken++));
        }
    }
}

template <XsvfPlayer::End end>
void XsvfPlayer::shiftPiece() {
    readValue(m_Tdi, m_ShiftBytes);
    shiftPiece(end, nullptr);
}

template <XsvfPlayer::End end>
void XsvfPlayer::shiftPieceExpecting() {
    readValue(m_Tdi, m_ShiftBytes);
    readValue(m_ExpectedTdo, m_ShiftBytes);
    shiftPiece(end, &m_ExpectedTdo);
}

void XsvfPlayer::enterState() {
    goTo(readByte());
}

void XsvfPlayer::setEndInstructionState() {
    setEndState(m_EndInstruction, TapState::PauseIr);
}

void XsvfPlayer::setEndDataState() {
    setEndState(m_EndData, TapState::PauseDr);
}

void XsvfPlayer::setEndState(TapState& state, TapState pause) {
    const std::uint8_t choice = readByte();
    if (choice > 1) {
        fail(XsvfError::IllegalState);
        return;
    }
    state = choice == 1 ? pause : TapState::RunTest;
}

void XsvfPlayer::skipComment() {
    while (m_Position < m_Size && readByte() != 0) {
    }
}

void XsvfPlayer::waitInState() {
    const std::uint8_t waitState = readByte();
    const std::uint8_t endState = readByte();
    const std::uint32_t microseconds = readNumber(4);
    const auto goUnlessThere = [this](std::uint8_t state) {
        if (state != static_cast<std::uint8_t>(m_Tap.state())) {
            goTo(state);
        }
    };
    goUnlessThere(waitState);
    if (!m_Ended) {
        wait(microseconds);
    }
    if (!m_Ended) {
        goUnlessThere(endState);
    }
}

void XsvfPlayer::goTo(std::uint8_t state) {
    if (state >= kTapStates || !m_Tap.goTo(TapState{state})) {
        fail(XsvfError::IllegalState);
    }
}

void XsvfPlayer::wait(std::uint32_t microseconds) {
    m_Port.wait(microseconds, [this] { return reportAgain(); });
}

/// Shifts with the file's run-test time and retries.
void XsvfPlayer::shiftComparing() {
    Shift data{TapState::ShiftDr, m_EndData, m_ShiftBits, &m_CapturedTdo, &m_ExpectedTdo, &m_TdoMask};
    data.runTestTime = m_RunTestTime;
    data.maximumRepeat = m_MaximumRepeat;
    shift(data);
}

/// Shifts a piece of a longer shift, without run-test time or retries.
void XsvfPlayer::shiftPiece(End end, const XsvfValue* expected) {
    Shift data{TapState::ShiftDr, end == End::Stay ? TapState::ShiftDr : m_EndData, m_ShiftBits};
    data.captured = expected == nullptr ? nullptr : &m_CapturedTdo;
    data.expected = expected;
    shift(data);
}

void XsvfPlayer::shift(const Shift& shift) {
    std::uint32_t runTestTime = shift.runTestTime;
    const auto runTest = [&] {
        if (runTestTime != 0) {
            m_Tap.goTo(TapState::RunTest);
            wait(runTestTime);
        }
    };
    if (shift.bits == 0) {
        runTest();
        return;
    }
    const bool leaves = shift.end != shift.through;
    for (unsigned int attempts = 0; attempts <= shift.maximumRepeat; ++attempts) {
        m_Tap.goTo(shift.through);
        m_Port.shift(shift.bits, m_Tdi.data(), shift.captured == nullptr ? nullptr : shift.captured->data(), leaves);
        if (shift.captured != nullptr) {
            shift.captured->setLength(m_Tdi.length());
        }
        const bool equal = isAsExpected(shift);
        if (leaves) {
            m_Tap.leftShift();
            if (!equal && runTestTime != 0 && attempts < shift.maximumRepeat) {
                m_Tap.goTo(TapState::PauseDr);
                m_Tap.goTo(TapState::ShiftDr);
                runTestTime += runTestTime / 4;
            } else {
                m_Tap.goTo(shift.end);
                runTest();
            }
        }
        if (equal || !reportAgain()) {
            return;
        }
    }
    fail(shift.maximumRepeat > 0 ? XsvfError::RetriesExhausted : XsvfError::TdoMismatch);
    const std::size_t compared = shift.expected->length(); // the mask or the shift may have another length
    m_Report.expectedTdo = shift.expected->bytes(compared);
    m_Report.capturedTdo = shift.captured->bytes(compared);
    m_Report.tdoMask = shift.mask == nullptr ? std::vector<unsigned char>{} : shift.mask->bytes(compared);
}

bool XsvfPlayer::isAsExpected(const Shift& shift) const {
    return shift.expected == nullptr || m_Comparison == Comparison::AlwaysEqual ||
           shift.expected->equals(*shift.captured, shift.mask);
}

} // namespace Utilities
