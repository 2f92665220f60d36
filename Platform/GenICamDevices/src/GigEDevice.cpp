// SPDX-License-Identifier: Apache-2.0

#include "GigEDevice.h"

#include <algorithm>
#include <chrono>

namespace GenICamDevices {

namespace {

using namespace Address;

constexpr auto kRestartTime = std::chrono::milliseconds(500);
constexpr std::uint32_t kStreamPortMask = 0xFFFF;

} // namespace

std::string hexadecimalOf(std::uint64_t number) {
    std::string text;
    do {
        text.insert(text.begin(), "0123456789ABCDEF"[number % 16]);
        number /= 16;
    } while (number != 0);
    return text;
}

GigEDevice::GigEDevice(const CameraOptions& options, const NetworkPlace& place)
    : m_Seed(options.seed), m_Mac(options.mac),
      m_Registers(options.description.empty() ? defaultDescription() : options.description),
      m_Features(m_Registers, options.width, options.height, options.fps), m_Acquisition(options.idStart),
      m_Faults(options.faults), m_TimestampZero(Clock::now()) {
    const std::string url = !options.url.empty()
                                ? options.url
                                : "Local:" + options.descriptionName + ";" + hexadecimalOf(kDescription) + ";" +
                                      hexadecimalOf(m_Registers.descriptionSize());
    const std::pair<std::uint32_t, std::string> texts[] = {
        {kVendor, options.vendor}, {kModel, options.model},
        {kDeviceVersion, "1.0"},   {kManufacturerInfo, "in software"},
        {kSerial, options.serial}, {kUserName, options.userName},
        {kFirstUrl, url},
    };
    for (const auto& [address, text] : texts) {
        m_Registers.setText(address, text);
    }
    const std::pair<std::uint32_t, std::uint32_t> numbers[] = {
        {kVersion, 0x00010002},
        {kDeviceMode, 0x80000001}, // big-endian, texts in UTF-8
        {kMacHigh, static_cast<std::uint32_t>(m_Mac >> 32)},
        {kMacLow, static_cast<std::uint32_t>(m_Mac)},
        {kSupportedIpConfiguration, 7},
        {kInterfaceCount, 1},
        {kLinkSpeed, 10000},
        {kStreamChannelCount, 1},
        // User name, serial number, heartbeat that can be disabled, link speed; resending, memory writes, several
        // registers at once.
        {kControlCapability, 0xF0000007},
    };
    for (const auto& [address, number] : numbers) {
        m_Registers.setInteger(address, number);
    }
    m_Registers.setLong(kTickFrequency, 1000000000);
    setPlaceLocked(place);
    endControlLocked();
}

std::optional<FrameOrder> GigEDevice::waitForFrame(Clock::time_point until) {
    std::unique_lock lock(m_Mutex);
    for (;;) {
        const auto now = Clock::now();
        endExpiredControlLocked(now);
        const auto due = dueLocked();
        if (m_IsShutDown) {
            return std::nullopt;
        }
        if (due && *due <= now) {
            FrameOrder order;
            order.run = m_Acquisition.run();
            order.number = m_Acquisition.taken();
            order.timestamp = timestampLocked(now);
            order.width = m_Registers.integer(kWidth);
            order.height = m_Registers.integer(kHeight);
            order.format = &m_Features.pixelFormat();
            order.picture = m_Features.picture();
            order.target = streamTargetLocked();
            order.faults = m_Faults;
            order.blockId = m_Acquisition.take(m_Features, now);
            m_Registers.setInteger(kAcquisitionStatus, m_Acquisition.isActive() ? 1 : 0);
            m_Registers.setInteger(kSentFrameCount, m_Registers.integer(kSentFrameCount) + 1);
            return order;
        }
        if (until <= now) {
            return std::nullopt;
        }
        // At least every 100 ms, so that control expires while nothing is sent.
        m_Changed.wait_until(lock, std::min({until, due.value_or(until), now + std::chrono::milliseconds(100)}));
    }
}

void GigEDevice::shutDown() {
    const std::lock_guard lock(m_Mutex);
    m_IsShutDown = true;
    stopStreamingLocked();
}

void GigEDevice::setPlace(const NetworkPlace& place) {
    const std::lock_guard lock(m_Mutex);
    setPlaceLocked(place);
}

void GigEDevice::setStreamSourcePort(std::uint16_t port) {
    const std::lock_guard lock(m_Mutex);
    m_Registers.setInteger(kStreamSourcePort, port);
}

Faults GigEDevice::faults() const {
    const std::lock_guard lock(m_Mutex);
    return m_Faults;
}

void GigEDevice::setFaults(const Faults& faults) {
    const std::lock_guard lock(m_Mutex);
    const bool changesControl = faults.deny != m_Faults.deny;
    m_Faults = faults;
    if (changesControl) {
        endControlLocked();
    }
    m_Changed.notify_all();
}

void GigEDevice::stopStreamingLocked() {
    m_Acquisition.stop();
    m_Registers.setInteger(kAcquisitionStatus, 0);
    m_WantedRun = 0;
    m_Changed.notify_all();
}

void GigEDevice::endControlLocked() {
    m_Controller.reset();
    m_Registers.setInteger(kPrivilege, m_Faults.deny ? kControlAccess : 0);
    m_Registers.setInteger(kStreamPort, 0);
    m_Registers.setInteger(kStreamDestination, 0);
    m_Registers.setInteger(kTlParamsLocked, 0);
    stopStreamingLocked();
}

void GigEDevice::endExpiredControlLocked(Clock::time_point now) {
    const bool isDisabled = (m_Registers.integer(kControlConfiguration) & 1) != 0;
    if (m_Controller && !isDisabled &&
        now - m_LastCommand > std::chrono::milliseconds(m_Registers.integer(kHeartbeatTimeout))) {
        endControlLocked();
    }
}

void GigEDevice::restartLocked(Clock::time_point now) {
    endControlLocked();
    m_Features.reset();
    m_TimestampZero = now;
    m_AwayUntil = now + kRestartTime;
}

std::uint64_t GigEDevice::timestampLocked(Clock::time_point now) const {
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(now - m_TimestampZero).count());
}

StreamTarget GigEDevice::streamTargetLocked() const {
    const std::uint32_t packet = m_Registers.integer(kStreamPacketSize);
    StreamTarget target;
    target.peer = {m_Registers.integer(kStreamDestination),
                   static_cast<std::uint16_t>(m_Registers.integer(kStreamPort) & kStreamPortMask)};
    target.packetSize = packet & 0xFFFF;
    target.packetDelay = m_Registers.integer(kStreamPacketDelay);
    target.doNotFragment = (packet & kDoNotFragment) != 0;
    return target;
}

void GigEDevice::setPlaceLocked(const NetworkPlace& place) {
    m_Registers.setInteger(kIp, place.address);
    m_Registers.setInteger(kMask, place.mask);
    m_Registers.setInteger(kGateway, place.gateway);
}

std::optional<Clock::time_point> GigEDevice::dueLocked() const {
    return isOpen(streamTargetLocked()) ? m_Acquisition.due(m_Features, m_Faults.stallAfter) : std::nullopt;
}

} // namespace GenICamDevices
