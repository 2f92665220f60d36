// SPDX-License-Identifier: Apache-2.0

#include "Device/Registry.h"

#include <algorithm>
#include <stdexcept>

#include "Process/Process.h"
#include "Refusal.h"

namespace SoftwareDevices {

Registry& Registry::instance() {
    struct OfProcess {
        Registry own;
        OfProcess* parents; // kept reachable in a child
    };
    static OfProcess* current = nullptr;
    static const bool isMade = [] {
        current = new OfProcess{};
        Process::callInForkedChild([] { current = new OfProcess{{}, current}; });
        Process::keepThisLibraryWithItsThreads();
        return true;
    }();
    static_cast<void>(isMade);
    return current->own;
}

void Registry::settleLocked() {
    if (!m_Settled) {
        m_Settled = true;
        for (const DeviceDescription& description : defaultDevices()) {
            plugLocked(std::make_shared<Hardware>(description));
        }
    }
    if (m_Returning.empty()) {
        return;
    }
    const auto now = Clock::now();
    const auto firstDue = std::stable_partition(m_Returning.begin(), m_Returning.end(),
                                                [now](const Returning& returning) { return returning.time > now; });
    std::vector<Returning> due(firstDue, m_Returning.end());
    m_Returning.erase(firstDue, m_Returning.end());
    for (Returning& returning : due) {
        plugLocked(std::move(returning.hardware));
    }
}

void Registry::plugLocked(std::shared_ptr<Hardware> hardware) {
    m_Unplugged.erase(hardware->description().serial);
    m_Devices.push_back(std::make_shared<Device>(std::move(hardware)));
}

std::shared_ptr<Device> Registry::takeLocked(std::uint32_t serial) {
    const auto returning = std::find_if(m_Returning.begin(), m_Returning.end(), [serial](const Returning& entry) {
        return entry.hardware->description().serial == serial;
    });
    if (returning != m_Returning.end()) {
        m_Unplugged[serial] = returning->hardware;
        m_Returning.erase(returning);
    }
    const auto found =
        std::find_if(m_Devices.begin(), m_Devices.end(),
                     [serial](const std::shared_ptr<Device>& device) { return device->serial() == serial; });
    if (found == m_Devices.end()) {
        return nullptr;
    }
    std::shared_ptr<Device> taken = *found;
    m_Devices.erase(found);
    m_Unplugged[serial] = taken->sharedHardware();
    return taken;
}

void Registry::farewell(const std::shared_ptr<Device>& device) {
    if (!device) {
        return;
    }
    device->leave();
    for (const auto& session : sessionsOf(device)) {
        session->capture->wake();
    }
}

void Registry::startEmpty() {
    std::map<std::uintptr_t, std::shared_ptr<Session>> sessions;
    std::vector<std::shared_ptr<Device>> devices;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Settled = true;
        sessions.swap(m_Sessions);
        devices.swap(m_Devices);
        m_Returning.clear();
        m_Unplugged.clear();
        m_Interface = 2;
    }
    for (const auto& device : devices) {
        device->leave();
    }
    for (const auto& [handle, session] : sessions) {
        session->capture->close();
    }
    m_Faults.clear();
    m_CallLog.take();
}

void Registry::plug(std::shared_ptr<Hardware> hardware) {
    std::shared_ptr<Device> replaced;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        settleLocked();
        replaced = takeLocked(hardware->description().serial);
        plugLocked(std::move(hardware));
    }
    farewell(replaced);
}

void Registry::plugMissing(const std::vector<DeviceDescription>& descriptions) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Settled = true;
    for (const DeviceDescription& description : descriptions) {
        const bool isThere = std::any_of(m_Devices.begin(), m_Devices.end(),
                                         [&](const auto& device) { return device->serial() == description.serial; });
        if (!isThere) {
            takeLocked(description.serial);
            plugLocked(std::make_shared<Hardware>(description));
        }
    }
}

void Registry::replug(std::uint32_t serial) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_Unplugged.find(serial);
    if (found == m_Unplugged.end()) {
        throw std::invalid_argument("No unplugged device has the serial number " + std::to_string(serial) + ".");
    }
    plugLocked(std::shared_ptr<Hardware>(found->second));
}

void Registry::unplugAll() {
    for (const auto& device : devices()) {
        leaveBus(device->serial());
    }
    const std::lock_guard<std::mutex> lock(m_Mutex);
    while (!m_Returning.empty()) {
        takeLocked(m_Returning.back().hardware->description().serial);
    }
}

bool Registry::leaveBus(std::uint32_t serial) {
    std::shared_ptr<Device> left;
    bool wasThere = false;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        settleLocked();
        const std::size_t rebooting = m_Returning.size();
        left = takeLocked(serial);
        wasThere = left || m_Returning.size() < rebooting;
    }
    farewell(left);
    return wasThere;
}

void Registry::reboot(const std::shared_ptr<Device>& device) {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const auto found = std::find(m_Devices.begin(), m_Devices.end(), device);
        if (found == m_Devices.end()) {
            return;
        }
        m_Devices.erase(found);
        m_Returning.push_back({Clock::now() + device->description().rebootTime, device->sharedHardware()});
    }
    farewell(device);
}

std::vector<std::shared_ptr<Device>> Registry::devices() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    settleLocked();
    return m_Devices;
}

std::shared_ptr<Device> Registry::device(std::uint32_t serial) {
    for (const auto& device : devices()) {
        if (device->serial() == serial) {
            return device;
        }
    }
    throw std::invalid_argument("No device with the serial number " + std::to_string(serial) + " is plugged in.");
}

std::vector<std::shared_ptr<Session>> Registry::sessionsOf(const std::shared_ptr<Device>& device) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::vector<std::shared_ptr<Session>> sessions;
    for (const auto& [handle, session] : m_Sessions) {
        if (session->device == device) {
            sessions.push_back(session);
        }
    }
    return sessions;
}

void Registry::selectInterface(std::uint32_t interfaceNumber) {
    require(interfaceNumber >= 1 && interfaceNumber <= 4, kInvalidArgument);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Interface = interfaceNumber;
}

std::vector<std::shared_ptr<Device>> Registry::enumeration(Library library) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    settleLocked();
    std::vector<std::shared_ptr<Device>> enumerated;
    for (const auto& device : m_Devices) {
        const bool isSelected = library != Library::CameraSdk || device->description().interfaceNumber == m_Interface;
        if (device->library() == library && isSelected) {
            enumerated.push_back(device);
        }
    }
    return enumerated;
}

std::shared_ptr<Device> Registry::enumerated(std::uint64_t index) {
    const auto present = enumeration(Library::CameraSdk);
    return index >= 1 && index <= present.size() ? present[index - 1] : nullptr;
}

void* Registry::open(const std::shared_ptr<Device>& device) {
    auto session = std::make_shared<Session>(device);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Sessions.emplace(++m_LastHandle, std::move(session));
    return reinterpret_cast<void*>(m_LastHandle); // NOLINT(performance-no-int-to-ptr): never dereferenced
}

std::shared_ptr<Session> Registry::session(const void* handle, Library library) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_Sessions.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_Sessions.end() || found->second->device->library() != library ? nullptr : found->second;
}

std::shared_ptr<Session> Registry::forget(const void* handle) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_Sessions.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_Sessions.end()) {
        return nullptr;
    }
    std::shared_ptr<Session> forgotten = found->second;
    m_Sessions.erase(found);
    return forgotten;
}

} // namespace SoftwareDevices
