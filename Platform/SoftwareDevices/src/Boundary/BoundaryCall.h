// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>

#include "Boundary/Boundary.h"
#include "Device/Refusal.h"
#include "Device/Registry.h"

// What every boundary call has in common: it is counted and logged, the planned faults befall it, and a refusal becomes
// its failure value and the handle's last error.

namespace SoftwareDevices::Boundary {

constexpr std::uint32_t kSuccess = 1;

/// Does to a call what is planned for it, or throws the refusal that is planned.
void applyFaults(Operation operation, Device* device, std::uint64_t callNumber);

/// @param device, session  of the call, or null
template <class Result, class Body>
Result perform(Operation operation, Device* device, Session* session, Result failure,
               std::initializer_list<double> numbers, Body body) noexcept {
    Result result = failure;
    std::uint32_t code = kNoError;
    try {
        applyFaults(operation, device, Registry::instance().callLog().count(operation));
        result = body();
        require(!Faults::reachMiddleOfCall(), kCameraGone); // which a call without work has not reached
    } catch (const Refusal& refusal) {
        code = refusal.code;
    } catch (...) {
        code = kInternalError;
    }
    if (code != kNoError) {
        result = failure;
        Faults::reachMiddleOfCall(); // refused before
    }
    try {
        if (session && code != kNoError) {
            session->lastError = code;
        }
        Registry::instance().callLog().record(operation, device ? device->serial() : kNoDevice, numbers,
                                              code == kNoError);
    } catch (...) { // no memory for the log
    }
    return result;
}

constexpr Library libraryOf(Operation operation) {
    return operation < Operation::TarnuNumCameras ? Library::CameraSdk : Library::Usb3Vision;
}

/// A call that names no camera.
template <class Result, class Body>
Result onModule(Operation operation, Result failure, std::initializer_list<double> numbers, Body body) noexcept {
    return perform(operation, nullptr, nullptr, failure, numbers, body);
}

/// A call on an open handle, whether its camera is still there or not. The body gets the session.
template <class Result, class Body>
Result onHandle(Operation operation, const void* handle, Result failure, std::initializer_list<double> numbers,
                Body body) noexcept {
    const std::shared_ptr<Session> session = Registry::instance().session(handle, libraryOf(operation));
    return perform(operation, session ? session->device.get() : nullptr, session.get(), failure, numbers, [&] {
        require(session != nullptr, kInvalidArgument);
        return body(*session);
    });
}

/// A call on an open handle whose camera must be there. The body gets the session and returns nothing: it succeeds or
/// throws.
template <class Body>
std::uint32_t onCamera(Operation operation, const void* handle, std::initializer_list<double> numbers,
                       Body body) noexcept {
    return onHandle(operation, handle, std::uint32_t{0}, numbers, [&](Session& session) {
        session.device->requirePresent();
        body(session);
        return kSuccess;
    });
}

/// Opens the device that find() gives, or null.
template <class Find>
void* openCamera(Operation operation, std::initializer_list<double> numbers, Find find) noexcept {
    std::shared_ptr<Device> device;
    try {
        device = find();
    } catch (...) { // no memory: like a camera that is not there
    }
    return perform(operation, device.get(), nullptr, static_cast<void*>(nullptr), numbers, [&] {
        require(device != nullptr, kInvalidArgument);
        device->requirePresent();
        return Registry::instance().open(device);
    });
}

std::uint32_t closeCamera(Operation operation, const void* handle) noexcept;

std::uint32_t readFlash(Operation operation, const void* handle, std::uint8_t* buffer, std::uint32_t address,
                        std::uint32_t length) noexcept;

/// @throws Refusal  the caller gave a null pointer
template <class Pointer>
void requirePointer(Pointer pointer) {
    require(pointer != nullptr, kInvalidArgument);
}

} // namespace SoftwareDevices::Boundary
