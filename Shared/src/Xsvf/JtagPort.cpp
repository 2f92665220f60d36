// SPDX-License-Identifier: Apache-2.0

#include "Xsvf/JtagPort.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Utilities {

namespace {

constexpr std::uint8_t kShiftTarget = 0x1A; // of the register operations

// Control words.
constexpr std::uint32_t kOpen = 0x501;
constexpr std::uint32_t kPrepare = 0x101;
constexpr std::uint32_t kClose = 0x500;
constexpr std::uint32_t kClockLow = 0x000;
constexpr std::uint32_t kClockHigh = 0x001;
constexpr std::uint32_t kIdlePulses = 0x300; // plus their number less 1
constexpr std::uint32_t kMostIdlePulses = 256;

// The value of a shift is its number of bits plus these.
constexpr std::uint32_t kLeaveShift = 0x8000;
constexpr std::uint32_t kNoTdo = 0x4000;
constexpr std::uint32_t kBitCountMask = 0xFFF;
constexpr std::size_t kMostBits = 2048;

/// Copies bytes in reverse order, eight at a time while that many are left.
void reverseCopy(const std::uint8_t* from, std::size_t length, std::uint8_t* to) {
    to += length;
    for (; length >= sizeof(std::uint64_t); length -= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, from, sizeof(word));
        from += sizeof(word);
        // Compilers turn these three lines into one instruction.
        word = (word & 0x00FF00FF00FF00FF) << 8 | (word >> 8 & 0x00FF00FF00FF00FF);
        word = (word & 0x0000FFFF0000FFFF) << 16 | (word >> 16 & 0x0000FFFF0000FFFF);
        word = word << 32 | word >> 32;
        to -= sizeof(word);
        std::memcpy(to, &word, sizeof(word));
    }
    while (length-- > 0) {
        *--to = *from++;
    }
}

} // namespace

JtagPort::JtagPort(const JtagTransport& transport) : m_Transport(transport), m_Open(control(kOpen)) {
    if (m_Open) {
        control(kPrepare);
    }
}

JtagPort::~JtagPort() {
    close();
}

void JtagPort::close() {
    if (m_Open) {
        m_Open = false;
        control(kClose);
    }
}

void JtagPort::clock() {
    control(kClockLow);
    control(kClockHigh);
}

void JtagPort::wait(std::uint32_t microseconds, const std::function<bool()>& checkpoint) {
    constexpr std::uint32_t kWordsBetweenCheckpoints = 1024;
    const JtagTransport transport = m_Transport; // a copy that no call can change
    if (transport.handle == nullptr || microseconds == 0) {
        return;
    }
    for (std::uint32_t fullWords = (microseconds - 1) / kMostIdlePulses; fullWords > 0;) {
        const std::uint32_t words = std::min(fullWords, kWordsBetweenCheckpoints);
        for (std::uint32_t count = 0; count < words; ++count) {
            const bool succeeded = transport.registerWrite(transport.handle, kControlTarget,
                                                           kIdlePulses + kMostIdlePulses - 1, 0, nullptr) != 0;
            if (!countUnless(succeeded) && !checkpoint()) {
                return;
            }
        }
        fullWords -= words;
        if (words == kWordsBetweenCheckpoints && !checkpoint()) {
            return;
        }
    }
    control(kIdlePulses + (microseconds - 1) % kMostIdlePulses);
}

void JtagPort::shift(std::size_t bits, const std::uint8_t* tdi, std::uint8_t* tdo, bool leave) {
    if (m_Transport.handle == nullptr) {
        return;
    }
    std::size_t end = (bits + 7) / 8;
    while (bits > 0) {
        const std::size_t count = std::min(bits, kMostBits);
        const std::size_t begin = end - (count + 7) / 8;
        bits -= count;
        transfer(count, tdi + begin, tdo == nullptr ? nullptr : tdo + begin, leave && bits == 0);
        end = begin;
    }
}

void JtagPort::transfer(std::size_t bits, const std::uint8_t* tdi, std::uint8_t* tdo, bool leave) {
    std::array<std::uint8_t, kMostBits / 8> bytes; // least significant byte first
    const std::size_t length = (bits + 7) / 8;
    reverseCopy(tdi, length, bytes.data());
    const std::uint32_t value =
        static_cast<std::uint32_t>(bits) | (leave ? kLeaveShift : 0) | (tdo == nullptr ? kNoTdo : 0);
    const bool written = countUnless(m_Transport.registerWrite(m_Transport.handle, kShiftTarget, value,
                                                               static_cast<std::uint32_t>(length), bytes.data()) != 0);
    if (written && tdo != nullptr) {
        reverseCopy(tdo, length, bytes.data()); // unchanged by a failed read
        countUnless(m_Transport.registerRead(m_Transport.handle, kShiftTarget, value & kBitCountMask,
                                             static_cast<std::uint32_t>(length), bytes.data()) != 0);
        reverseCopy(bytes.data(), length, tdo);
    }
}

} // namespace Utilities
