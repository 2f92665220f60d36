// SPDX-License-Identifier: Apache-2.0

#include "Device/Hardware.h"

#include <algorithm>
#include <stdexcept>

#include "Device/Usb3VisionFlash.h"
#include "Refusal.h"
#include "Sensor/FrameGeometry.h"

namespace SoftwareDevices {

namespace {

constexpr std::uint32_t kAfeMetadataAddress = 0x190F00;

constexpr std::uint32_t kMaximumJtagDataBits = 65536;

void requireSense(bool makesSense, const char* what) {
    if (!makesSense) {
        throw std::invalid_argument(what);
    }
}

DeviceDescription checked(const DeviceDescription& device) {
    requireSense(device.serial != kNoDevice, "A device needs a serial number.");
    requireSense(device.interfaceNumber >= 1 && device.interfaceNumber <= 4, "Interfaces are numbered 1 to 4.");
    requireSense(device.modelName.size() < sizeof Usb3VisionCameraRecord::modelName, "A model name has a limit.");
    requireSense(device.jtagIdCode % 2 == 1, "An IDCODE is odd.");
    requireSense(device.jtagDataBits >= 1 && device.jtagDataBits <= kMaximumJtagDataBits,
                 "The JTAG data register has 1 to 65536 bits.");
    if (device.sensorWidth == 0) {
        return device;
    }
    const std::uint32_t cell = device.colorFormat == ColorFormat::MONO ? 1 : 2;
    const auto isUnit = [cell](std::uint32_t unit, std::uint32_t length) {
        return unit > 0 && unit % cell == 0 && length > 0 && length % unit == 0;
    };
    requireSense(isUnit(device.unitWidth, device.sensorWidth) && isUnit(device.unitHeight, device.sensorHeight),
                 "The sensor's sides are multiples of its units, and those of a colour sensor are even.");
    requireSense(device.bitDepth >= 8 && device.bitDepth <= 16, "A sensor has 8 to 16 bits.");
    requireSense(device.saturationExposure > 0, "The saturation exposure is positive.");
    requireSense(!device.pixelFormats.empty() &&
                     std::all_of(device.pixelFormats.begin(), device.pixelFormats.end(), findPixelLayout),
                 "A sensor delivers at least one of the pixel formats 0, 1, 2, 6 and 7.");
    requireSense(!device.frameRates.empty() && device.frameRates.front() > 0 &&
                     std::is_sorted(device.frameRates.begin(), device.frameRates.end()),
                 "A sensor has frame rates above 0, in ascending order.");
    requireSense(!device.sampling || (device.sampling->binning.size() <= 8 && device.sampling->subsampling.size() <= 8),
                 "A device names at most eight factors of a kind.");
    return device;
}

} // namespace

Hardware::Hardware(const DeviceDescription& description)
    : m_Description(checked(description)), m_Sensor(m_Description), m_Network(description.network) {
    constexpr std::size_t kAfeMetadataSize = 256;
    const std::string& timing = m_Description.afeTiming;
    requireSense(timing.size() < kAfeMetadataSize &&
                     m_Description.usb3VisionFile.size() <= kFlashSize - kUsb3VisionFileAddress,
                 "The flash has no room for this.");
    if (!timing.empty()) {
        m_Flash.rewrite(kAfeMetadataAddress, reinterpret_cast<const std::uint8_t*>(timing.c_str()),
                        static_cast<std::uint32_t>(timing.size() + 1));
    }
    if (!m_Description.usb3VisionFile.empty()) {
        storeUsb3VisionFile(m_Flash, m_Description.usb3VisionFile);
    }
}

NetworkSettings Hardware::network() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    require(m_Network.has_value(), kUnsupported);
    return *m_Network;
}

void Hardware::setCameraAddresses(const std::array<std::uint32_t, 3>& addresses) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    require(m_Network.has_value(), kUnsupported);
    m_Network->cameraAddresses = addresses;
}

void Hardware::writeRam(std::uint32_t address, const std::uint8_t* data, std::uint32_t length) {
    constexpr std::size_t kRamSize = 8u << 20;
    require(std::uint64_t{address} + length <= std::uint64_t{1} << 32, kOutOfRange);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    require(m_Ram.bytesInUse() + length <= kRamSize, kOutOfRange);
    m_Ram.write(address, data, length);
}

std::vector<std::uint8_t> Hardware::ram(std::uint32_t address, std::uint32_t length) const {
    std::vector<std::uint8_t> content(length);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Ram.read(address, content.data(), length);
    return content;
}

std::optional<std::uint32_t> Hardware::startedProgram() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_StartedProgram;
}

void Hardware::setStartedProgram(std::uint32_t address) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_StartedProgram = address;
}

} // namespace SoftwareDevices
