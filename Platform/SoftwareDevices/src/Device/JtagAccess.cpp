// SPDX-License-Identifier: Apache-2.0

#include "Device/JtagAccess.h"

#include <algorithm>
#include <utility>

#include "Refusal.h"

namespace SoftwareDevices {

namespace {

// Control words.
constexpr std::uint32_t kTckLow = 0x000;
constexpr std::uint32_t kTckHigh = 0x001;
constexpr std::uint32_t kSelectTap = 0x101;
constexpr std::uint32_t kRunTest = 0x300; // plus the number of pulses minus one
constexpr std::uint32_t kPulseTmsLow = 0x400;
constexpr std::uint32_t kPulseTmsHigh = 0x401;
constexpr std::uint32_t kClose = 0x500;
constexpr std::uint32_t kOpen = 0x501;

// Transfers of a shift.
constexpr std::uint32_t kBits = 0x0FFF;
constexpr std::uint32_t kNoTdo = 0x4000;
constexpr std::uint32_t kLeaves = 0x8000; // leaves the shift state with the last bit
constexpr std::uint32_t kMaximumBits = 2048;

} // namespace

void JtagAccess::control(const void* user, std::uint32_t word) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (word == kOpen) {
        require(m_User == nullptr, kBusy);
        m_User = user;
        return;
    }
    requireUserLocked(user);
    if ((word & ~std::uint32_t{0xFF}) == kRunTest) {
        for (std::uint32_t pulses = word - kRunTest + 1; pulses > 0; --pulses) {
            pulseLocked(false, m_Tdi);
        }
        return;
    }
    switch (word) {
    case kClose:
        m_User = nullptr;
        m_CapturedBits = 0;
        return;
    case kSelectTap: // there is only one
        return;
    case kTckLow:
        return fallLocked();
    case kTckHigh:
        return riseLocked(m_Tms, m_Tdi);
    case kPulseTmsLow:
    case kPulseTmsHigh:
        return pulseLocked(word == kPulseTmsHigh, m_Tdi);
    default:
        throw Refusal{kInvalidArgument};
    }
}

void JtagAccess::shift(const void* user, std::uint32_t transfer, const std::uint8_t* bytes, std::uint32_t length) {
    const std::uint32_t bits = transfer & kBits;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    requireUserLocked(user);
    require((transfer & ~(kBits | kNoTdo | kLeaves)) == 0 && bytes != nullptr, kInvalidArgument);
    require(bits >= 1 && bits <= kMaximumBits, kOutOfRange);
    require(length == (bits + 7) / 8, kInvalidArgument);
    m_Captured.assign(length, 0);
    for (std::uint32_t bit = 0; bit < bits; ++bit) {
        pulseLocked((transfer & kLeaves) != 0 && bit + 1 == bits, (bytes[bit / 8] >> bit % 8 & 1) != 0);
        m_Captured[bit / 8] = static_cast<std::uint8_t>(m_Captured[bit / 8] | m_Tdo << bit % 8);
    }
    m_CapturedBits = (transfer & kNoTdo) != 0 ? 0 : bits;
}

void JtagAccess::readCaptured(const void* user, std::uint32_t bits, std::uint8_t* buffer, std::uint32_t length) const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    requireUserLocked(user);
    require(bits != 0 && bits == m_CapturedBits && length == m_Captured.size(), kInvalidArgument);
    std::copy(m_Captured.begin(), m_Captured.end(), buffer);
}

void JtagAccess::release(const void* user) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_User == user) {
        m_User = nullptr;
        m_CapturedBits = 0;
    }
}

bool JtagAccess::isOpen() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_User != nullptr;
}

TapState JtagAccess::state() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Tap.state();
}

std::vector<std::uint8_t> JtagAccess::data() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Tap.data();
}

void JtagAccess::startLog() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Log.clear();
    m_Logs = true;
}

std::vector<JtagClocks> JtagAccess::takeLog() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Logs = false;
    return std::exchange(m_Log, {});
}

void JtagAccess::requireUserLocked(const void* user) const {
    require(m_User == user, m_User == nullptr ? kUnsupported : kBusy);
}

void JtagAccess::riseLocked(bool tms, bool tdi) {
    if (m_Tck) {
        return;
    }
    m_Tck = true;
    m_Tms = tms;
    m_Tdi = tdi;
    const TapState state = m_Tap.state();
    m_Tdo = m_Tap.rise(tms, tdi);
    if (!m_Logs) {
        return;
    }
    const auto isLike = [&](const JtagClocks& run) {
        return run.state == state && run.tms == tms && run.tdi == tdi && run.tdo == m_Tdo;
    };
    if (m_Log.empty() || !isLike(m_Log.back())) {
        m_Log.push_back({state, tms, tdi, m_Tdo, 0});
    }
    ++m_Log.back().clocks;
}

void JtagAccess::fallLocked() {
    if (m_Tck) {
        m_Tck = false;
        m_Tap.fall();
    }
}

void JtagAccess::pulseLocked(bool tms, bool tdi) {
    fallLocked();
    riseLocked(tms, tdi);
    fallLocked();
}

} // namespace SoftwareDevices
