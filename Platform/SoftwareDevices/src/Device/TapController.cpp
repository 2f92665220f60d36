// SPDX-License-Identifier: Apache-2.0

#include "Device/TapController.h"

#include <algorithm>

namespace SoftwareDevices {

namespace {

constexpr std::uint8_t kInstructionCapture = 0x01; // the standard defines the two lowest bits

/// The next states at a rising edge of TCK.
struct Transition {
    TapState whenLow; ///< with TMS low
    TapState whenHigh;
};

constexpr Transition kTransitions[] = {
    {TapState::RunTestIdle, TapState::TestLogicReset}, // TestLogicReset
    {TapState::RunTestIdle, TapState::SelectDr},       // RunTestIdle
    {TapState::CaptureDr, TapState::SelectIr},         // SelectDr
    {TapState::ShiftDr, TapState::Exit1Dr},            // CaptureDr
    {TapState::ShiftDr, TapState::Exit1Dr},            // ShiftDr
    {TapState::PauseDr, TapState::UpdateDr},           // Exit1Dr
    {TapState::PauseDr, TapState::Exit2Dr},            // PauseDr
    {TapState::ShiftDr, TapState::UpdateDr},           // Exit2Dr
    {TapState::RunTestIdle, TapState::SelectDr},       // UpdateDr
    {TapState::CaptureIr, TapState::TestLogicReset},   // SelectIr
    {TapState::ShiftIr, TapState::Exit1Ir},            // CaptureIr
    {TapState::ShiftIr, TapState::Exit1Ir},            // ShiftIr
    {TapState::PauseIr, TapState::UpdateIr},           // Exit1Ir
    {TapState::PauseIr, TapState::Exit2Ir},            // PauseIr
    {TapState::ShiftIr, TapState::UpdateIr},           // Exit2Ir
    {TapState::RunTestIdle, TapState::SelectDr},       // UpdateIr
};
static_assert(std::size(kTransitions) == static_cast<std::size_t>(TapState::UpdateIr) + 1);

std::vector<std::uint8_t> bitsOf(std::uint32_t number, std::size_t count) {
    std::vector<std::uint8_t> bits(count);
    for (std::size_t i = 0; i < count; ++i) {
        bits[i] = number >> i & 1;
    }
    return bits;
}

std::vector<std::uint8_t> bytesOf(const std::vector<std::uint8_t>& bits) {
    std::vector<std::uint8_t> bytes((bits.size() + 7) / 8);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] | bits[i] << i % 8);
    }
    return bytes;
}

} // namespace

TapController::TapController(std::uint32_t idCode, std::uint32_t dataBits)
    : m_IdCode(bitsOf(idCode, 32)), m_Data(dataBits) {}

bool TapController::rise(bool tms, bool tdi) {
    bool tdo = true;
    switch (m_State) {
    case TapState::CaptureIr:
        capture(bitsOf(kInstructionCapture, kJtagInstructionBits));
        break;
    case TapState::CaptureDr:
        capture(m_Instruction == kJtagIdCode ? m_IdCode : m_Instruction == kJtagData ? m_Data : Bits{0});
        break;
    case TapState::ShiftDr:
    case TapState::ShiftIr:
        tdo = m_Shifting[m_Output] != 0;
        m_Shifting[m_Output] = tdi;
        m_Output = m_Output + 1 == m_Shifting.size() ? 0 : m_Output + 1;
        break;
    default:
        break;
    }
    const Transition& transition = kTransitions[static_cast<std::size_t>(m_State)];
    m_State = tms ? transition.whenHigh : transition.whenLow;
    return tdo;
}

void TapController::fall() {
    if (m_State == TapState::TestLogicReset) {
        m_Instruction = kJtagIdCode;
    } else if (m_State == TapState::UpdateIr) {
        m_Instruction = bytesOf(captured()).front();
    } else if (m_State == TapState::UpdateDr && m_Instruction == kJtagData) {
        m_Data = captured();
    }
}

std::vector<std::uint8_t> TapController::data() const {
    return bytesOf(m_Data);
}

void TapController::capture(Bits bits) {
    m_Shifting = std::move(bits);
    m_Output = 0;
}

TapController::Bits TapController::captured() const {
    Bits bits = m_Shifting;
    std::rotate(bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(m_Output), bits.end());
    return bits;
}

} // namespace SoftwareDevices
