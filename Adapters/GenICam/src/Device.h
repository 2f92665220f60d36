// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arv.h>

#include <atomic>
#include <cstdint>
#include <memory>
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
    /// Gives control back, while others may still refer to this object. Not to be called by two threads at once.
    void close();

private:
    explicit Device(ObjectPointer<ArvDevice> device, std::shared_ptr<ControlChannel> channel);

    ObjectPointer<ArvDevice> m_Device;
    std::shared_ptr<ControlChannel> m_Channel; // shared with the Aravis object
    std::shared_ptr<std::atomic<bool>> m_Lost; // shared with the signal's receiver
    std::atomic<bool> m_IsGone{false};         // known when it is closed
};

} // namespace GenICamAdapter
