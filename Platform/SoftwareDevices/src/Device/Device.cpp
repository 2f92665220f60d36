// SPDX-License-Identifier: Apache-2.0

#include "Device/Device.h"

#include <algorithm>
#include <cmath>

#include "Device/Usb3VisionFlash.h"
#include "Refusal.h"
#include "Sensor/FrameGeometry.h"

namespace SoftwareDevices {

namespace {

bool isSameRate(float a, float b) {
    return std::abs(a - b) <= 1e-4f * std::max(a, b);
}

} // namespace

Device::Device(std::shared_ptr<Hardware> hardware)
    : m_Hardware(std::move(hardware)),
      m_Library(startsAsUsb3Vision(m_Hardware->flash()) ? Library::Usb3Vision : Library::CameraSdk),
      m_Jtag(description().jtagIdCode, description().jtagDataBits), m_Properties(description()),
      m_PowerMode(description().powerMode) {
    if (m_Hardware->hasSensor()) {
        m_Format = wholeSensor(description());
        m_RateIndex = description().frameRates.size() - 1;
    }
}

void Device::requirePresent() const {
    require(!m_Gone, kCameraGone);
}

void Device::leave() {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Gone = true;
    }
    m_Left.notify_all();
}

void Device::linger(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Left.wait_for(lock, time, [this] { return m_Gone.load(); });
}

ORVEX_VERSION Device::version() const {
    const DeviceDescription& device = description();
    return {device.firmware, device.fpga, device.api, device.driver, device.serial, device.cameraId};
}

PropertyRow Device::property(std::uint32_t number) const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Properties.row(number);
}

bool Device::hasProperty(std::uint32_t number) const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Properties.find(number) != nullptr;
}

void Device::writeProperty(std::uint32_t number, float value, std::int32_t flags) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Properties.write(number, value, flags);
}

void Device::replaceProperty(const PropertyRow& row) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Properties.replace(row);
}

void Device::setWritable(std::uint32_t number, bool writable) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Properties.setWritable(number, writable);
}

std::uint32_t Device::powerMode() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    require(m_PowerMode.has_value(), kUnsupported);
    return *m_PowerMode;
}

void Device::setPowerMode(std::uint32_t mode) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    require(m_PowerMode.has_value(), kUnsupported);
    require(mode <= 1, kInvalidArgument);
    m_PowerMode = mode;
}

bool Device::hardwareTrigger() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_HardwareTrigger;
}

void Device::setHardwareTrigger(bool enabled) {
    require(description().hasHardwareTrigger, kUnsupported);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_HardwareTrigger = enabled;
}

void Device::requireSensor() const {
    require(m_Hardware->hasSensor(), kUnsupported);
}

std::vector<float> Device::frameRates() const {
    requireSensor();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return frameRatesLocked();
}

std::vector<float> Device::frameRatesLocked() const {
    const PropertyRow* clock = m_Properties.find(PropertyNumber::kVideoClockSpeed);
    const float slowness = clock ? 1 + std::floor(clock->value - clock->minimum) : 1;
    std::vector<float> rates = description().frameRates;
    for (float& rate : rates) {
        rate /= slowness;
    }
    return rates;
}

ORVEX_FRAME_FORMAT Device::format() const {
    requireSensor();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Format;
}

float Device::frameRate() const {
    requireSensor();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return frameRatesLocked()[m_RateIndex];
}

void Device::setFormat(const ORVEX_FRAME_FORMAT& format, float rate) {
    requireSensor();
    checkFormat(description(), format);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const std::vector<float> rates = frameRatesLocked();
    const auto found =
        std::find_if(rates.begin(), rates.end(), [rate](float offered) { return isSameRate(offered, rate); });
    require(found != rates.end(), kInvalidFormat);
    require(m_Streams == 0, kBusy);
    m_Format = format;
    m_RateIndex = static_cast<std::size_t>(found - rates.begin());
}

SamplingCapability Device::sampling() const {
    require(description().sampling.has_value(), kUnsupported);
    return *description().sampling;
}

Exposure Device::exposureLocked(float milliseconds, float gain) const {
    Exposure exposure;
    exposure.milliseconds = milliseconds;
    exposure.gain = gain;
    exposure.blackLevel = m_Properties.valueOr(PropertyNumber::kBlackLevel, 0);
    exposure.gamma = std::max(m_Properties.valueOr(PropertyNumber::kGamma, 1), 0.01f);
    return exposure;
}

Exposure Device::videoExposure() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    Exposure exposure =
        exposureLocked(m_Properties.valueOr(PropertyNumber::kVideoExposure, description().saturationExposure),
                       m_Properties.valueOr(PropertyNumber::kVideoGain, 1));
    exposure.filterGains[kRed] = m_Properties.valueOr(PropertyNumber::kVideoGainRed, 1);
    exposure.filterGains[kGreen1] = m_Properties.valueOr(PropertyNumber::kVideoGainGreen1, 1);
    exposure.filterGains[kGreen2] = m_Properties.valueOr(PropertyNumber::kVideoGainGreen2, 1);
    exposure.filterGains[kBlue] = m_Properties.valueOr(PropertyNumber::kVideoGainBlue, 1);
    return exposure;
}

Exposure Device::stillExposure(const ORVEX_SNAPSHOT& snapshot) const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    Exposure exposure = exposureLocked(snapshot.exposure, snapshot.gain);
    exposure.filterGains[kRed] = snapshot.gainRed;
    exposure.filterGains[kGreen1] = snapshot.gainGreen1;
    exposure.filterGains[kGreen2] = snapshot.gainGreen2;
    exposure.filterGains[kBlue] = snapshot.gainBlue;
    return exposure;
}

std::chrono::nanoseconds Device::frameInterval() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const double period = 1.0 / static_cast<double>(frameRatesLocked()[m_RateIndex]);
    const double exposure = static_cast<double>(m_Properties.valueOr(PropertyNumber::kVideoExposure, 0)) / 1000;
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double>(std::max(period, exposure)));
}

void Device::beginStream() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    ++m_Streams;
}

void Device::endStream() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    --m_Streams;
}

bool Device::isStreaming() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Streams > 0;
}

void Device::dropFrames(std::uint32_t count) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_FramesToDrop = count;
}

void Device::truncateFrames(std::uint32_t count, std::uint32_t bytes) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_FramesToTruncate = count;
    m_TruncatedBytes = bytes;
}

bool Device::takeDrop() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_FramesToDrop == 0) {
        return false;
    }
    --m_FramesToDrop;
    return true;
}

std::size_t Device::takeTruncation(std::size_t imageBytes) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_FramesToTruncate == 0) {
        return imageBytes;
    }
    --m_FramesToTruncate;
    return std::min<std::size_t>(imageBytes, m_TruncatedBytes);
}

} // namespace SoftwareDevices
