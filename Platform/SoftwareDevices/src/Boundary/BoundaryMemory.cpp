// SPDX-License-Identifier: Apache-2.0

#include "Boundary/BoundaryCall.h"

// Flash, RAM, registers and commands.

namespace SoftwareDevices::Boundary {

namespace {

constexpr uint8_t kRebootCommand = 0x1B;
constexpr uint8_t kFlashStatusCommand = 0x1C;
constexpr uint8_t kRamRequest = 0xA0;

// Targets of a register access.
constexpr uint8_t kSecondFpga = 6;
constexpr uint8_t kJtagControl = 0x19;
constexpr uint8_t kJtagShift = 0x1A;

using FlashChange = void (Flash::*)(std::uint32_t address, const std::uint8_t* data, std::uint32_t length);

/// Applies a change in two halves, so that unplugging in the middle leaves it half done.
template <class Apply>
uint32_t onFlash(Operation operation, void* handle, uint32_t address, uint32_t length, Apply apply) {
    return onCamera(operation, handle, {static_cast<double>(address), static_cast<double>(length)},
                    [&](Session& session) {
                        require(std::uint64_t{address} + length <= kFlashSize, kOutOfRange);
                        Flash& flash = session.device->hardware().flash();
                        const uint32_t half = length / 2;
                        apply(flash, 0, half);
                        Faults::reachMiddleOfCall();
                        session.device->requirePresent();
                        apply(flash, half, length - half);
                    });
}

uint32_t writeOnFlash(Operation operation, void* handle, const uint8_t* data, uint32_t address, uint32_t length,
                      FlashChange change) {
    return onFlash(operation, handle, address, length, [&](Flash& flash, uint32_t offset, uint32_t bytes) {
        require(data != nullptr || bytes == 0, kInvalidArgument);
        (flash.*change)(address + offset, data + offset, bytes);
    });
}

} // namespace

uint32_t sdkEraseFlash(void* handle, uint32_t address, uint32_t length) noexcept {
    return onFlash(Operation::sdkEraseFlash, handle, address, length,
                   [&](Flash& flash, uint32_t offset, uint32_t bytes) { flash.erase(address + offset, bytes); });
}

uint32_t sdkReadFlash(void* handle, uint8_t* buffer, uint32_t address, uint32_t length) noexcept {
    return readFlash(Operation::sdkReadFlash, handle, buffer, address, length);
}

uint32_t sdkWriteFlash(void* handle, const uint8_t* data, uint32_t address, uint32_t length) noexcept {
    return writeOnFlash(Operation::sdkWriteFlash, handle, data, address, length, &Flash::write);
}

uint32_t sdkUpdateFlash(void* handle, const uint8_t* data, uint32_t address, uint32_t length) noexcept {
    return writeOnFlash(Operation::sdkUpdateFlash, handle, data, address, length, &Flash::rewrite);
}

uint32_t sdkVendorRequest(void* handle, uint8_t request, uint32_t value, uint32_t index, uint32_t length,
                          uint8_t* data) noexcept {
    return onCamera(Operation::sdkVendorRequest, handle,
                    {static_cast<double>(request), static_cast<double>(value), static_cast<double>(index),
                     static_cast<double>(length)},
                    [&](Session& session) {
                        require(request == kRamRequest && value == index >> 16, kUnsupported);
                        require(data != nullptr || length == 0, kInvalidArgument);
                        Hardware& hardware = session.device->hardware();
                        if (length > 0) {
                            hardware.writeRam(index, data, length);
                        } else {
                            hardware.setStartedProgram(index);
                        }
                        // A device that leaves the bus now has received its data, or has started, but can no longer
                        // acknowledge.
                        Faults::reachMiddleOfCall();
                        session.device->requirePresent();
                        if (length == 0) {
                            Registry::instance().reboot(session.device);
                        }
                    });
}

uint32_t sdkCommandRead(void* handle, uint8_t command, uint32_t value, uint32_t length, uint8_t* buffer) noexcept {
    return onCamera(Operation::sdkCommandRead, handle,
                    {static_cast<double>(command), static_cast<double>(value), static_cast<double>(length)},
                    [&](Session& session) {
                        requirePointer(buffer);
                        require(command == kFlashStatusCommand, kUnsupported);
                        require(length == 1 && value < kFlashSize, kInvalidArgument);
                        *buffer = session.device->hardware().flash().status();
                    });
}

uint32_t sdkCommandWrite(void* handle, uint8_t command, uint32_t value, uint32_t length, const uint8_t* data) noexcept {
    return onCamera(Operation::sdkCommandWrite, handle,
                    {static_cast<double>(command), static_cast<double>(value), static_cast<double>(length)},
                    [&](Session& session) {
                        require(command == kFlashStatusCommand || command == kRebootCommand, kUnsupported);
                        require(length > 0 && data != nullptr, kInvalidArgument);
                        if (command == kFlashStatusCommand) {
                            require(value < kFlashSize, kOutOfRange);
                            session.device->hardware().flash().setStatus(*data);
                        } else {
                            require(value <= 1, kInvalidArgument); // 0 to the boot loader, 1 to the firmware
                            Registry::instance().reboot(session.device);
                        }
                    });
}

uint32_t sdkRegisterRead(void* handle, uint8_t target, uint32_t address, uint32_t length, uint8_t* buffer) noexcept {
    return onCamera(Operation::sdkRegisterRead, handle,
                    {static_cast<double>(target), static_cast<double>(address), static_cast<double>(length)},
                    [&](Session& session) {
                        requirePointer(buffer);
                        if (target == kJtagShift) {
                            return session.device->jtag().readCaptured(&session, address, buffer, length);
                        }
                        const auto version = session.device->description().fpga2Version;
                        require(target == kSecondFpga && version && address <= 1, kUnsupported);
                        require(length == 1, kInvalidArgument);
                        *buffer = static_cast<uint8_t>(address == 0 ? *version >> 8 : *version);
                    });
}

uint32_t sdkRegisterWrite(void* handle, uint8_t target, uint32_t value, uint32_t length, const uint8_t* data) noexcept {
    return onCamera(Operation::sdkRegisterWrite, handle,
                    {static_cast<double>(target), static_cast<double>(value), static_cast<double>(length)},
                    [&](Session& session) {
                        require(target == kJtagControl || target == kJtagShift, kUnsupported);
                        JtagAccess& jtag = session.device->jtag();
                        if (target == kJtagShift) {
                            return jtag.shift(&session, value, data, length);
                        }
                        require(length == 0 && data == nullptr, kInvalidArgument);
                        jtag.control(&session, value);
                    });
}

} // namespace SoftwareDevices::Boundary
