// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>

#include "Boundary/Boundary.h"
#include "Device/Registry.h"
#include "Refusal.h"

// The common part of every boundary call: it is counted and logged, planned faults are applied, and a refusal becomes
// the call's failure value and the handle's last error.

namespace SoftwareDevices::Boundary {

constexpr std::uint32_t kSuccess = 1;

/// Applies the planned faults to a call; throws if a refusal is planned.
void applyFaults(Operation operation, Device* device, std::uint64_t callNumber);

/// @param device, session  those of the call, or null
template <class Result, class Body>
Result perform(Operation operation, Device* device, Session* session, Result failure,
               std::initializer_list<double> numbers, Body body) noexcept {
    Result result = failure;
    std::uint32_t code = kNoError;
    try {
        applyFaults(operation, device, Registry::instance().callLog().count(operation));
        result = body();
        require(!Faults::reachMiddleOfCall(), kCameraGone); // not reached by a call without work
    } catch (const Refusal& refusal) {
        code = refusal.code;
    } catch (...) {
        code = kInternalError;
    }
    if (code != kNoError) {
        result = failure;
        Faults::reachMiddleOfCall(); // a refused call has not reached it
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

/// A call on an open handle, even if its camera is gone. The body gets the session.
template <class Result, class Body>
Result onHandle(Operation operation, const void* handle, Result failure, std::initializer_list<double> numbers,
                Body body) noexcept {
    const std::shared_ptr<Session> session = Registry::instance().session(handle, libraryOf(operation));
    return perform(operation, session ? session->device.get() : nullptr, session.get(), failure, numbers, [&] {
        require(session != nullptr, kInvalidArgument);
        return body(*session);
    });
}

/// A call on an open handle whose camera must be present. The body gets the session and returns nothing: it succeeds or
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

/// Opens the device that find() returns; null if there is none.
template <class Find>
void* openCamera(Operation operation, std::initializer_list<double> numbers, Find find) noexcept {
    std::shared_ptr<Device> device;
    try {
        device = find();
    } catch (...) { // no memory: as if there were no camera
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
