// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <memory>

#include "Device/Hardware.h"
#include "Device/JtagAccess.h"
#include "Device/PropertyBank.h"

namespace SoftwareDevices {

/// The flat library that accesses a device.
enum class Library { CameraSdk, Usb3Vision };

/// One stay of a device on the bus, from plugging to unplugging; replugging begins a new stay. Thread-safe. A device
/// throws a Refusal for operations that it refuses.
class Device {
public:
    explicit Device(std::shared_ptr<Hardware> hardware);

    std::uint32_t serial() const { return description().serial; }
    const DeviceDescription& description() const { return m_Hardware->description(); }
    Hardware& hardware() const { return *m_Hardware; }
    const std::shared_ptr<Hardware>& sharedHardware() const { return m_Hardware; }
    Library library() const { return m_Library; }
    JtagAccess& jtag() { return m_Jtag; }

    bool isGone() const { return m_Gone; }
    void requirePresent() const;
    /// Ends the stay, and the waits in linger().
    void leave();
    /// Waits for the time; ends early when the device leaves.
    void linger(std::chrono::milliseconds time);

    ORVEX_VERSION version() const;

    PropertyRow property(std::uint32_t number) const;
    bool hasProperty(std::uint32_t number) const;
    void writeProperty(std::uint32_t number, float value, std::int32_t flags);
    void replaceProperty(const PropertyRow& row);
    void setWritable(std::uint32_t number, bool writable);

    std::uint32_t powerMode() const;
    void setPowerMode(std::uint32_t mode);
    bool hardwareTrigger() const;
    void setHardwareTrigger(bool enabled);

    /// The rates at the present clock speed, ascending.
    std::vector<float> frameRates() const;
    ORVEX_FRAME_FORMAT format() const;
    float frameRate() const;
    void setFormat(const ORVEX_FRAME_FORMAT& format, float rate);
    SamplingCapability sampling() const;

    /// The present settings of video, and those of stills that are not part of the still settings.
    Exposure videoExposure() const;
    Exposure stillExposure(const ORVEX_SNAPSHOT& snapshot) const;
    /// The time from one video frame to the next: exposure or frame period, whichever is longer.
    std::chrono::nanoseconds frameInterval() const;

    /// Marks a stream as running: the format cannot be changed meanwhile.
    void beginStream();
    void endStream();
    bool isStreaming() const;

    void dropFrames(std::uint32_t count);
    void truncateFrames(std::uint32_t count, std::uint32_t bytes);
    /// @return whether this frame is lost
    bool takeDrop();
    /// @return the number of bytes of this frame that arrive
    std::size_t takeTruncation(std::size_t imageBytes);

private:
    std::vector<float> frameRatesLocked() const;
    Exposure exposureLocked(float milliseconds, float gain) const;
    void requireSensor() const;

    const std::shared_ptr<Hardware> m_Hardware;
    const Library m_Library;
    JtagAccess m_Jtag;
    std::atomic<bool> m_Gone{false};

    mutable std::mutex m_Mutex; // guards the following members; nothing else is locked under it
    std::condition_variable m_Left;
    PropertyBank m_Properties;
    ORVEX_FRAME_FORMAT m_Format{};
    std::size_t m_RateIndex = 0; ///< in the list of frame rates; a slower clock keeps it
    std::optional<std::uint32_t> m_PowerMode;
    bool m_HardwareTrigger = false;
    int m_Streams = 0;
    std::uint32_t m_FramesToDrop = 0;
    std::uint32_t m_FramesToTruncate = 0;
    std::uint32_t m_TruncatedBytes = 0;
};

} // namespace SoftwareDevices
