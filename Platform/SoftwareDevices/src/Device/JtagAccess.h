// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <vector>

#include "Device/TapController.h"

namespace SoftwareDevices {

/// The layer between the register operations and the TAP: access for one handle at a time, the levels of the lines, the
/// bits captured by the last shift. Thread-safe. A refused operation throws a Refusal and clocks nothing.
class JtagAccess {
public:
    JtagAccess(std::uint32_t idCode, std::uint32_t dataBits) : m_Tap(idCode, dataBits) {}

    /// @param user  identifies the owner of the handle
    void control(const void* user, std::uint32_t word);
    /// @param transfer  number of bits and flags
    void shift(const void* user, std::uint32_t transfer, const std::uint8_t* bytes, std::uint32_t length);
    void readCaptured(const void* user, std::uint32_t bits, std::uint8_t* buffer, std::uint32_t length) const;
    /// Closes the access if it belongs to this user.
    void release(const void* user);

    bool isOpen() const;
    TapState state() const;
    std::vector<std::uint8_t> data() const;

    void startLog();
    std::vector<JtagClocks> takeLog();

private:
    void requireUserLocked(const void* user) const;
    void riseLocked(bool tms, bool tdi);
    void fallLocked();
    void pulseLocked(bool tms, bool tdi);

    mutable std::mutex m_Mutex; // guards the following members
    const void* m_User = nullptr;
    TapController m_Tap;
    bool m_Tck = false;
    bool m_Tms = false;
    bool m_Tdi = false;
    bool m_Tdo = true;
    std::uint32_t m_CapturedBits = 0; ///< 0: the last shift captured none
    std::vector<std::uint8_t> m_Captured;
    bool m_Logs = false;
    std::vector<JtagClocks> m_Log;
};

} // namespace SoftwareDevices
