// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "Boundary/CallLog.h"
#include "Boundary/Faults.h"
#include "Device/Capture.h"
#include "Device/Device.h"

namespace SoftwareDevices {

/// One open handle, of the library that reaches its device.
struct Session {
    explicit Session(const std::shared_ptr<Device>& opened)
        : device(opened), capture(std::make_shared<Capture>(opened)) {}
    ~Session() { device->jtag().release(this); }

    const std::shared_ptr<Device> device;
    const std::shared_ptr<Capture> capture;
    std::atomic<std::uint32_t> lastError{kNoError};
};

/// Which devices are on the bus, and which of them are open. One for the process, never destroyed. Thread-safe.
class Registry {
public:
    static Registry& instance();

    CallLog& callLog() { return m_CallLog; }
    Faults& faults() { return m_Faults; }

    // Control side.
    void startEmpty();
    void plug(std::shared_ptr<Hardware> hardware);
    void plugMissing(const std::vector<DeviceDescription>& descriptions);
    void replug(std::uint32_t serial);
    void unplugAll();
    /// @return false: it is not there
    bool leaveBus(std::uint32_t serial);
    /// Off the bus now, and back after the device's reboot time. Nothing happens to a stay that is over.
    void reboot(const std::shared_ptr<Device>& device);
    std::vector<std::shared_ptr<Device>> devices();
    /// @throws std::invalid_argument  not plugged in
    std::shared_ptr<Device> device(std::uint32_t serial);
    std::vector<std::shared_ptr<Session>> sessionsOf(const std::shared_ptr<Device>& device);

    // Boundary side.
    void selectInterface(std::uint32_t interfaceNumber);
    /// Of the camera SDK on the selected interface.
    std::vector<std::shared_ptr<Device>> enumeration(Library library);
    /// @return null when the SDK enumerates none of this index, which counts from 1
    std::shared_ptr<Device> enumerated(std::uint64_t index);
    void* open(const std::shared_ptr<Device>& device);
    /// @return null for a handle that is not open, or is the other library's
    std::shared_ptr<Session> session(const void* handle, Library library);
    /// The handle is stale from now on; the session is to be closed by the caller.
    std::shared_ptr<Session> forget(const void* handle);

private:
    using Clock = std::chrono::steady_clock;

    struct Returning {
        Clock::time_point time;
        std::shared_ptr<Hardware> hardware;
    };

    Registry() = default;

    /// Brings the default devices on first use, and back what has rebooted.
    void settleLocked();
    void plugLocked(std::shared_ptr<Hardware> hardware);
    /// @return what stayed on the bus until now, or null
    std::shared_ptr<Device> takeLocked(std::uint32_t serial);

    /// Wakes all who wait in it. Not under m_Mutex.
    void farewell(const std::shared_ptr<Device>& device);

    CallLog m_CallLog;
    Faults m_Faults;

    std::mutex m_Mutex; // guards what follows; a flash's is taken under it
    bool m_Settled = false;
    std::vector<std::shared_ptr<Device>> m_Devices; ///< in order of plugging
    std::vector<Returning> m_Returning;
    std::map<std::uint32_t, std::shared_ptr<Hardware>> m_Unplugged;
    std::map<std::uintptr_t, std::shared_ptr<Session>> m_Sessions;
    std::uintptr_t m_LastHandle = 0; ///< handles of both libraries count up, and are never dereferenced
    std::uint32_t m_Interface = 2;
};

} // namespace SoftwareDevices
