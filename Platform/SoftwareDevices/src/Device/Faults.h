// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <mutex>

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// The planned faults of boundary calls. Thread-safe.
class Faults {
public:
    /// The faults of one call.
    struct Effect {
        std::uint32_t errorCode = kNoError;
        std::chrono::milliseconds delay{0};
        std::uint32_t unplugged = kNoDevice; ///< the device to unplug
    };

    void failNext(std::uint32_t serial, Operation operation, std::uint32_t count, std::uint32_t errorCode);
    /// @param callNumber  as CallLog counts
    void failCall(std::uint64_t callNumber, std::uint32_t errorCode);
    void delay(std::uint32_t serial, Operation operation, std::chrono::milliseconds time);
    void unplugDuring(std::uint32_t serial, Operation operation, std::uint32_t call);
    /// @param callNumber  as CallLog counts
    void unplugCall(std::uint32_t serial, std::uint64_t callNumber);
    void clear();

    Effect onCall(std::uint32_t serial, Operation operation, std::uint64_t callNumber);

    /// Arms reachMiddleOfCall() on this thread.
    static void unplugInMiddle(std::uint32_t serial);
    /// Called by an operation without any lock when half of its work is done, and again at its end. Unplugs the device
    /// if that is still planned; returns whether it did.
    static bool reachMiddleOfCall();

private:
    struct Planned {
        std::uint32_t serial;
        Operation operation;
        std::uint32_t count; ///< calls that fail; calls until the device is unplugged
        std::uint32_t errorCode;
        std::chrono::milliseconds delay;
        bool unplugs;
    };

    void plan(const Planned& planned);

    std::atomic<bool> m_Any{false};
    std::mutex m_Mutex; // guards the following members
    std::vector<Planned> m_Planned;
    std::uint64_t m_FailingCall = 0; ///< 0: none
    std::uint32_t m_FailingCode = kNoError;
    std::uint64_t m_UnpluggingCall = 0; ///< 0: none
    std::uint32_t m_UnpluggedSerial = kNoDevice;
};

} // namespace SoftwareDevices
