// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "Device/CallLog.h"
#include "Device/Capture.h"
#include "Device/Device.h"
#include "Device/Faults.h"

namespace SoftwareDevices {

/// One open handle, of the library that accesses its device.
struct Session {
    explicit Session(const std::shared_ptr<Device>& opened)
        : device(opened), capture(std::make_shared<Capture>(opened)) {}
    ~Session() { device->jtag().release(this); }

    const std::shared_ptr<Device> device;
    const std::shared_ptr<Capture> capture;
    std::atomic<std::uint32_t> lastError{kNoError};
};

/// The devices on the bus, and the open ones among them. One per process, never destroyed. Thread-safe. A forked child
/// begins with one of its own, as a new process does: threads of its parent may hold the mutexes of the parent's.
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
    /// @return false if it is not there
    bool leaveBus(std::uint32_t serial);
    /// Removes the device from the bus and returns it after its reboot time. Does nothing if the stay is over.
    void reboot(const std::shared_ptr<Device>& device);
    std::vector<std::shared_ptr<Device>> devices();
    /// @throws std::invalid_argument  not plugged in
    std::shared_ptr<Device> device(std::uint32_t serial);
    std::vector<std::shared_ptr<Session>> sessionsOf(const std::shared_ptr<Device>& device);

    // Boundary side.
    void selectInterface(std::uint32_t interfaceNumber);
    /// The devices that a library enumerates; for the camera SDK, on the selected interface.
    std::vector<std::shared_ptr<Device>> enumeration(Library library);
    /// @return null if the SDK enumerates none with this index, which counts from 1
    std::shared_ptr<Device> enumerated(std::uint64_t index);
    void* open(const std::shared_ptr<Device>& device);
    /// @return null if the handle is not open, or belongs to the other library
    std::shared_ptr<Session> session(const void* handle, Library library);
    /// Makes the handle stale; the caller must close the session.
    std::shared_ptr<Session> forget(const void* handle);

private:
    using Clock = std::chrono::steady_clock;

    struct Returning {
        Clock::time_point time;
        std::shared_ptr<Hardware> hardware;
    };

    Registry() = default;

    /// Plugs the default devices on first use, and returns rebooted devices to the bus.
    void settleLocked();
    void plugLocked(std::shared_ptr<Hardware> hardware);
    /// @return the device that was on the bus until now, or null
    std::shared_ptr<Device> takeLocked(std::uint32_t serial);

    /// Wakes all threads that wait in the device. Must not be called under m_Mutex.
    void farewell(const std::shared_ptr<Device>& device);

    CallLog m_CallLog;
    Faults m_Faults;

    std::mutex m_Mutex; // guards the following members; the mutex of a flash is locked under it
    bool m_Settled = false;
    std::vector<std::shared_ptr<Device>> m_Devices; ///< in order of plugging
    std::vector<Returning> m_Returning;
    std::map<std::uint32_t, std::shared_ptr<Hardware>> m_Unplugged;
    std::map<std::uintptr_t, std::shared_ptr<Session>> m_Sessions;
    std::uintptr_t m_LastHandle = 0; ///< handles of both libraries count up, and are never dereferenced
    std::uint32_t m_Interface = 2;
};

} // namespace SoftwareDevices
