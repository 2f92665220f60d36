// SPDX-License-Identifier: Apache-2.0

// XSVF files. The input is one byte of switches, one with the number of answer bytes, these bytes, which the device
// returns in turn, and the file.

#include <array>
#include <optional>

#include "Support/Input.h"
#include "Xsvf/XsvfPlay.h"

namespace {

using namespace Fuzzing;
using namespace Utilities;

struct OutOfBudget {};

/// The JTAG port of a device, with its own TAP controller.
class Pins {
public:
    Pins(bool refusesAccess, Bytes answers) : m_RefusesAccess(refusesAccess), m_Answers(std::move(answers)) {}

    JtagTransport transport() { return {this, write, read}; }

    bool wasUsed() const { return m_Words > 1; }
    bool isClosed() const { return m_Closed; }
    bool isSpent() const { return m_Words > kMostWords; }

private:
    /// Keeps a run short: files may ask for waits of billions of pulses.
    static constexpr int kMostWords = 20000;
    static constexpr std::uint8_t kReset = 0, kShiftDr = 4, kShiftIr = 11;
    /// The next states with TMS 0 and TMS 1 (IEEE 1149.1), numbered as in XSVF files.
    static constexpr std::array<std::array<std::uint8_t, 2>, 16> kNext{{{1, 0},
                                                                        {1, 2},
                                                                        {3, 9},
                                                                        {4, 5},
                                                                        {4, 5},
                                                                        {6, 8},
                                                                        {6, 7},
                                                                        {4, 8},
                                                                        {1, 2},
                                                                        {10, 0},
                                                                        {11, 12},
                                                                        {11, 12},
                                                                        {13, 15},
                                                                        {13, 14},
                                                                        {11, 15},
                                                                        {1, 2}}};

    static std::uint32_t write(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                               const std::uint8_t* data) {
        Pins& pins = *static_cast<Pins*>(handle);
        ++pins.m_Words;
        require(!pins.m_Closed, "nothing happens after the port was closed");
        require((target == 0x19 && length == 0 && data == nullptr) || (target == 0x1A && length > 0 && data != nullptr),
                "a control word or a transfer");
        return target == 0x19 ? pins.control(value) : pins.transfer(value, length);
    }

    static std::uint32_t read(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                              std::uint8_t* buffer) {
        Pins& pins = *static_cast<Pins*>(handle);
        require(target == 0x1A && pins.m_Wanted == value && length == (value + 7) / 8,
                "bits are read once, after the transfer that asked for them");
        pins.m_Wanted.reset();
        for (std::uint32_t index = 0; index < length; ++index) {
            buffer[index] = pins.m_Answers.empty() ? 0 : pins.m_Answers[pins.m_NextAnswer++ % pins.m_Answers.size()];
        }
        return 1;
    }

    std::uint32_t control(std::uint32_t word) {
        require((m_Words == 1) == (word == 0x501), "the port is opened first and once");
        require((m_Words == 2) == (word == 0x101), "the port is prepared after opening");
        if (word == 0x501) {
            return m_RefusesAccess ? 0 : 1;
        }
        require(!m_RefusesAccess, "a port that was not opened is left alone");
        if (word == 0x500) {
            m_Closed = true;
            return 1;
        }
        if (isSpent()) {
            throw OutOfBudget{};
        }
        if ((word & ~1U) == 0x400) {
            m_Tms = word & 1U;
            clock();
        } else if (word == 0x001) {
            clock();
        } else if (word >= 0x300 && word <= 0x3FF) {
            m_InStep = m_InStep && kNext[m_State][m_Tms] == m_State;
        } else {
            require(word == 0x000 || word == 0x101, "a known control word");
        }
        return 1;
    }

    std::uint32_t transfer(std::uint32_t value, std::uint32_t length) {
        const std::uint32_t bits = value & 0xFFF;
        require((value & ~0xCFFFU) == 0 && bits >= 1 && bits <= 2048 && length == (bits + 7) / 8,
                "the size of a transfer");
        require(!m_InStep || m_State == kShiftDr || m_State == kShiftIr, "bits move in a shift state");
        require(!m_Wanted, "requested bits are read");
        if (isSpent()) {
            throw OutOfBudget{};
        }
        if ((value & 0x4000) == 0) {
            m_Wanted = bits;
        }
        m_HighClocks = 0;
        m_Tms = value >> 15;
        if (m_Tms != 0) {
            clock();
        }
        return 1;
    }

    void clock() {
        m_State = kNext[m_State][m_Tms];
        m_HighClocks = m_Tms == 0 ? 0 : m_HighClocks + 1;
        m_InStep = m_InStep || m_HighClocks == 5;
    }

    const bool m_RefusesAccess;
    const Bytes m_Answers;
    std::size_t m_NextAnswer = 0;
    int m_Words = 0;
    bool m_Closed = false;
    std::optional<std::uint32_t> m_Wanted; // bits requested but not read yet
    std::uint8_t m_State = kReset;
    std::uint32_t m_Tms = 1;
    int m_HighClocks = 0;
    /// False from a wait in a state in which a TAP controller cannot stay until the next reset.
    bool m_InStep = false;
};

bool isMismatch(XsvfError error) {
    return error == XsvfError::TdoMismatch || error == XsvfError::RetriesExhausted;
}

void requireSane(const XsvfReport& report, const Bytes& file) {
    require(report.commandCount <= file.size(), "a command takes at least one byte");
    require(report.commandOffset < file.size() || (file.empty() && report.commandOffset == 0),
            "the last command lies in the file");
    require(!report.dataEnded || report.error == XsvfError::IllegalCommand,
            "data that ends early is an illegal command");
    require(report.failedTransfers == (report.opened ? 0U : 1U), "only refused operations fail");
    require(report.expectedTdo.size() == report.capturedTdo.size(), "captured and expected bits have equal lengths");
    require(report.expectedTdo.empty() || isMismatch(report.error), "bits are reported only after a mismatch");
    if (isMismatch(report.error)) {
        require(report.tdoMask.empty() || report.tdoMask.size() == report.expectedTdo.size(),
                "the mask has the length of the bits");
        bool differs = false;
        for (std::size_t index = 0; index < report.expectedTdo.size(); ++index) {
            const unsigned int mask = report.tdoMask.empty() ? 0xFF : report.tdoMask[index];
            differs = differs || ((report.expectedTdo[index] ^ report.capturedTdo[index]) & mask) != 0;
        }
        require(differs, "a reported mismatch is one");
    }
}

bool isEqual(const XsvfReport& one, const XsvfReport& other) {
    return one.error == other.error && one.dataEnded == other.dataEnded && one.commandCount == other.commandCount &&
           one.commandOffset == other.commandOffset && one.expectedTdo == other.expectedTdo &&
           one.capturedTdo == other.capturedTdo && one.tdoMask == other.tdoMask;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool refusesAccess = (input.byte() & 1U) != 0;
    const Bytes answers = input.bytes(input.byte() & 0x1FU);
    const bool answersZeros = answers == Bytes(answers.size());
    Pins pins(refusesAccess, answers);
    const Bytes file = input.rest();

    const XsvfReport checked = checkXsvf(file);
    require(checked.opened && !isMismatch(checked.error), "without a device all comparisons succeed");
    requireSane(checked, file);

    XsvfReport played;
    double lastFraction = 0;
    const auto progress = [&](double fraction) {
        require(fraction >= lastFraction && fraction <= 1, "progress never decreases and is at most 1");
        lastFraction = fraction;
    };
    const bool ended = !isRefused<OutOfBudget>([&] {
        require(playXsvf(pins.transport(), file, played, progress) == played.succeeded(),
                "the result and the report agree");
    });
    require(ended || pins.isSpent(), "a play ends by itself");
    require(played.opened == !refusesAccess && pins.isClosed() == played.opened && pins.wasUsed() == played.opened,
            "an opened port is closed");
    requireSane(played, file);
    require(played.commandCount <= checked.commandCount, "no device lengthens a play");
    if (ended && played.opened) {
        require(isMismatch(played.error) || isEqual(played, checked), "only comparisons depend on the device");
        if (answersZeros) {
            XsvfReport without;
            playXsvf(JtagTransport{}, file, without, {});
            require(isEqual(played, without), "a play without a device equals one with zeros");
        }
    }
    return 0;
}
