// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace Utilities {

/// The two register operations that access a camera's JTAG port; they return 0 on failure.
struct JtagTransport {
    void* handle = nullptr; ///< null: there is no device, and no operation is called
    std::uint32_t (*registerWrite)(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                                   const std::uint8_t* data) = nullptr;
    std::uint32_t (*registerRead)(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                                  std::uint8_t* buffer) = nullptr;
};

/// Open access to a JTAG port; the destructor closes it. Counts failures, and continues.
class JtagPort {
public:
    explicit JtagPort(const JtagTransport& transport);
    JtagPort(const JtagPort&) = delete;
    JtagPort& operator=(const JtagPort&) = delete;
    ~JtagPort();

    /// Whether the camera gave access, or there is no device.
    bool isOpen() const { return m_Open; }
    void close();
    /// The number of failed register operations.
    std::uint64_t failedTransfers() const { return m_FailedTransfers; }

    /// Sends one pulse of TCK with TMS at a level.
    void pulse(bool tms) { pulses(tms ? 1 : 0, 1); }
    /// Sends one pulse for each of @p count levels of TMS, the first of which is the lowest bit.
    void pulses(unsigned int levels, unsigned int count) {
        const JtagTransport transport = m_Transport; // a copy that no call can change
        for (; transport.handle != nullptr && count > 0; --count, levels >>= 1) {
            const std::uint32_t word = kPulseTmsLow | (levels & 1U);
            countUnless(transport.registerWrite(transport.handle, kControlTarget, word, 0, nullptr) != 0);
        }
    }
    /// Sends one pulse of TCK with TMS unchanged.
    void clock();
    /// Sends one pulse of TCK in run-test/idle for each microsecond. Calls @p checkpoint occasionally, and when a pulse
    /// failed; it returns whether to continue.
    void wait(std::uint32_t microseconds, const std::function<bool()>& checkpoint);

    /// Shifts @p bits bits through the register that the TAP has selected, starting with the least significant bit of
    /// the last byte.
    /// @param tdi (bits + 7) / 8 bytes, most significant byte first
    /// @param tdo receives the captured bits, in the same places; null if they are not needed
    /// @param leave whether TMS is high at the last bit
    void shift(std::size_t bits, const std::uint8_t* tdi, std::uint8_t* tdo, bool leave);

private:
    static constexpr std::uint8_t kControlTarget = 0x19; // of the register operations
    static constexpr std::uint32_t kPulseTmsLow = 0x400; // plus 1: high

    bool countUnless(bool succeeded) {
        if (!succeeded) {
            ++m_FailedTransfers;
        }
        return succeeded;
    }
    bool control(std::uint32_t word) {
        return countUnless(m_Transport.handle == nullptr ||
                           m_Transport.registerWrite(m_Transport.handle, kControlTarget, word, 0, nullptr) != 0);
    }
    void transfer(std::size_t bits, const std::uint8_t* tdi, std::uint8_t* tdo, bool leave);

    JtagTransport m_Transport;
    std::uint64_t m_FailedTransfers = 0;
    bool m_Open;
};

} // namespace Utilities
