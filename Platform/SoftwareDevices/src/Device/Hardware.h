// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <mutex>

#include "Device/Flash.h"
#include "Sensor/Sensor.h"

namespace SoftwareDevices {

/// The part of a device that outlasts its stay on the bus: its description, memories, addresses and scene. Thread-safe.
class Hardware {
public:
    /// @throws std::invalid_argument  the description contradicts itself
    explicit Hardware(const DeviceDescription& description);

    const DeviceDescription& description() const { return m_Description; }
    bool hasSensor() const { return m_Description.sensorWidth > 0; }
    Flash& flash() { return m_Flash; }
    Sensor& sensor() { return m_Sensor; }

    bool isAsFastAsAsked() const { return m_AsFastAsAsked; }
    void setAsFastAsAsked(bool asFastAsAsked) { m_AsFastAsAsked = asFastAsAsked; }

    /// @throws Refusal  not a GigE device
    NetworkSettings network() const;
    void setCameraAddresses(const std::array<std::uint32_t, 3>& addresses);

    void writeRam(std::uint32_t address, const std::uint8_t* data, std::uint32_t length);
    std::vector<std::uint8_t> ram(std::uint32_t address, std::uint32_t length) const;
    /// The RAM address at which the last program was started.
    std::optional<std::uint32_t> startedProgram() const;
    void setStartedProgram(std::uint32_t address);

private:
    const DeviceDescription m_Description;
    Flash m_Flash;
    Sensor m_Sensor;
    std::atomic<bool> m_AsFastAsAsked{false};
    mutable std::mutex m_Mutex; // guards the following members
    std::optional<NetworkSettings> m_Network;
    PagedMemory m_Ram{0};
    std::optional<std::uint32_t> m_StartedProgram;
};

} // namespace SoftwareDevices
