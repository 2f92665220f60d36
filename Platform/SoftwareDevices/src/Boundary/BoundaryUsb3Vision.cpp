// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstring>

#include "Boundary/BoundaryCall.h"
#include "Device/Usb3VisionFlash.h"

// The USB3 Vision access library. Its cameras are opened by the record that enumerated them.

namespace SoftwareDevices::Boundary {

namespace {

constexpr uint32_t kRebootRegister = 0x1B;

Usb3VisionCameraRecord recordOf(const DeviceDescription& device) {
    Usb3VisionCameraRecord record{};
    device.modelName.copy(record.modelName, sizeof record.modelName - 1);
    record.serialNumber = device.serial;
    return record;
}

bool isSame(const Usb3VisionCameraRecord& a, const Usb3VisionCameraRecord& b) {
    return a.serialNumber == b.serialNumber && std::strncmp(a.modelName, b.modelName, sizeof a.modelName) == 0;
}

/// @return the device, or null
std::shared_ptr<Device> findDevice(const Usb3VisionCameraRecord* record) {
    if (record == nullptr) {
        return nullptr;
    }
    const auto present = Registry::instance().enumeration(Library::Usb3Vision);
    const auto found = std::find_if(present.begin(), present.end(), [&](const std::shared_ptr<Device>& device) {
        return isSame(recordOf(device->description()), *record);
    });
    return found == present.end() ? nullptr : *found;
}

} // namespace

uint32_t TarnuNumCameras() noexcept {
    return onModule(Operation::TarnuNumCameras, uint32_t{0}, {},
                    [] { return static_cast<uint32_t>(Registry::instance().enumeration(Library::Usb3Vision).size()); });
}

uint32_t TarnuEnumCameras(Usb3VisionCameraRecord* records, uint32_t count) noexcept {
    return onModule(Operation::TarnuEnumCameras, uint32_t{0}, {static_cast<double>(count)}, [&] {
        requirePointer(records);
        const auto present = Registry::instance().enumeration(Library::Usb3Vision);
        const std::size_t filled = std::min<std::size_t>(present.size(), count);
        std::transform(present.begin(), present.begin() + static_cast<std::ptrdiff_t>(filled), records,
                       [](const std::shared_ptr<Device>& device) { return recordOf(device->description()); });
        return static_cast<uint32_t>(filled);
    });
}

void* TarnuOpenCamera(const Usb3VisionCameraRecord* record) noexcept {
    return openCamera(Operation::TarnuOpenCamera, {record ? static_cast<double>(record->serialNumber) : kNoDevice},
                      [record] { return findDevice(record); });
}

uint32_t TarnuCloseCamera(void* handle) noexcept {
    return closeCamera(Operation::TarnuCloseCamera, handle);
}

uint32_t TarnuFlashRead(void* handle, uint8_t* buffer, uint32_t address, uint32_t length) noexcept {
    return readFlash(Operation::TarnuFlashRead, handle, buffer, address, length);
}

uint32_t TarnuWriteBootSequence(void* handle, uint32_t usb3Vision) noexcept {
    return onCamera(Operation::TarnuWriteBootSequence, handle, {static_cast<double>(usb3Vision)},
                    [&](Session& session) {
                        require(usb3Vision <= 1, kInvalidArgument);
                        setUsb3VisionMode(session.device->hardware().flash(), usb3Vision == 1);
                    });
}

uint32_t TarnuSglWrite(void* handle, uint32_t first, uint32_t second, uint32_t value, uint32_t length,
                       const uint8_t* data) noexcept {
    return onCamera(Operation::TarnuSglWrite, handle,
                    {static_cast<double>(first), static_cast<double>(second), static_cast<double>(value),
                     static_cast<double>(length)},
                    [&](Session& session) {
                        require(first == kRebootRegister && second == kRebootRegister, kUnsupported);
                        require(value <= 1 && length == 1 && data != nullptr, kInvalidArgument);
                        Registry::instance().reboot(session.device);
                    });
}

} // namespace SoftwareDevices::Boundary
