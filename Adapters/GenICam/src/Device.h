// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arv.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ControlChannel.h"
#include "FoundCamera.h"
#include "GObjects.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// Serialises what Aravis does not: openings, whose parser is static, and the list of USB cameras.
Utilities::Mutex& aravisMutex();

/// An open camera: its description and its registers.
///
/// The registers of a network camera are reached through a control channel of this library's own, whose waits are
/// short; Aravis interprets the description and receives the frames.
class Device {
public:
    /// @throws std::runtime_error  says why the camera cannot be opened
    static std::shared_ptr<Device> open(const FoundCamera& camera, std::uint32_t heartbeatMs);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    /// Returns at once also if the camera is gone.
    ~Device();

    ArvDevice* get() const { return m_Device.get(); }
    bool isOnNetwork() const { return m_Channel != nullptr; }
    /// Null for a USB camera.
    ControlChannel* channel() const { return m_Channel.get(); }
    /// Whether the camera answers and is still controlled by this program. Thread-safe.
    bool isAlive();
    /// Whether the camera's stream is locked, as far as it is known. Thread-safe, as the following.
    std::optional<bool> lockOfStream() const;
    void rememberLockOfStream(std::optional<bool> isLocked);
    /// Lets Aravis stream from the camera. @throws std::runtime_error  the camera is gone, or was lost meanwhile
    void prepareStream() const;
    /// Whether it is known to be controlled by this program no longer. Thread-safe.
    bool hasLostControl() const;
    /// Gives control back, while others may still refer to this object. Not to be called by two threads at once.
    void close();

private:
    Device(ObjectPointer<ArvDevice> device, std::shared_ptr<ControlChannel> channel, std::string address);

    ObjectPointer<ArvDevice> m_Device;
    std::shared_ptr<ControlChannel> m_Channel; // shared with the Aravis object
    const std::string m_Address;
    std::shared_ptr<std::atomic<bool>> m_Lost; // shared with the signal's receiver
    std::atomic<bool> m_IsGone{false};         // known when it is closed
    enum class Lock : std::uint8_t { Unknown, Open, Locked };
    std::atomic<Lock> m_LockOfStream{Lock::Unknown};
};

} // namespace GenICamAdapter
