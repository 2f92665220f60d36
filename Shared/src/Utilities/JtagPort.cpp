#include "Utilities/JtagPort.h"

#include <algorithm>
#include <array>

namespace Utilities {

namespace {

// Targets of the register operations.
constexpr std::uint8_t kControlTarget = 0x19;
constexpr std::uint8_t kShiftTarget = 0x1A;

// Control words.
constexpr std::uint32_t kOpen = 0x501;
constexpr std::uint32_t kPrepare = 0x101;
constexpr std::uint32_t kClose = 0x500;
constexpr std::uint32_t kClockLow = 0x000;
constexpr std::uint32_t kClockHigh = 0x001;
constexpr std::uint32_t kIdlePulses = 0x300; // plus their number less 1
constexpr std::uint32_t kMostIdlePulses = 256;

// A shift's value is its number of bits, plus these.
constexpr std::uint32_t kLeaveShift = 0x8000;
constexpr std::uint32_t kNoTdo = 0x4000;
constexpr std::uint32_t kBitCountMask = 0xFFF;
constexpr std::size_t kMostBits = 2048;

} // namespace

JtagPort::JtagPort(const JtagTransport& transport) : m_Transport(transport), m_Open(control(kOpen)) {
    if (m_Open) {
        control(kPrepare);
    }
}

JtagPort::~JtagPort() {
    if (m_Open) {
        control(kClose);
    }
}

bool JtagPort::control(std::uint32_t word) {
    return m_Transport.handle == nullptr ||
           m_Transport.registerWrite(m_Transport.handle, kControlTarget, word, 0, nullptr) != 0;
}

void JtagPort::clock() {
    control(kClockLow);
    control(kClockHigh);
}

void JtagPort::wait(std::uint32_t microseconds, const std::function<void()>& checkpoint) {
    constexpr std::uint32_t kWordsBetweenCheckpoints = 1024;
    if (m_Transport.handle == nullptr || microseconds == 0) {
        return;
    }
    for (std::uint32_t words = 1; microseconds > kMostIdlePulses; ++words) {
        control(kIdlePulses + kMostIdlePulses - 1);
        microseconds -= kMostIdlePulses;
        if (words % kWordsBetweenCheckpoints == 0) {
            checkpoint();
        }
    }
    control(kIdlePulses + microseconds - 1);
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
    std::reverse_copy(tdi, tdi + length, bytes.begin());
    const std::uint32_t value =
        static_cast<std::uint32_t>(bits) | (leave ? kLeaveShift : 0) | (tdo == nullptr ? kNoTdo : 0);
    const bool written = m_Transport.registerWrite(m_Transport.handle, kShiftTarget, value,
                                                   static_cast<std::uint32_t>(length), bytes.data()) != 0;
    if (written && tdo != nullptr) {
        std::reverse_copy(tdo, tdo + length, bytes.begin()); // what a failed read leaves
        m_Transport.registerRead(m_Transport.handle, kShiftTarget, value & kBitCountMask,
                                 static_cast<std::uint32_t>(length), bytes.data());
        std::reverse_copy(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length), tdo);
    }
}

} // namespace Utilities
