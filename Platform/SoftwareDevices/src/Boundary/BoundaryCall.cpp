// SPDX-License-Identifier: Apache-2.0

#include "Boundary/BoundaryCall.h"

#include <thread>

namespace SoftwareDevices::Boundary {

namespace {

/// Operations that call Faults::reachMiddleOfCall themselves.
bool hasMiddle(Operation operation) {
    switch (operation) {
    case Operation::sdkCaptureVideoFrames:
    case Operation::sdkCaptureStillFrame:
    case Operation::sdkWriteFlash:
    case Operation::sdkUpdateFlash:
    case Operation::sdkEraseFlash:
    case Operation::sdkVendorRequest:
        return true;
    default:
        return false;
    }
}

} // namespace

void applyFaults(Operation operation, Device* device, std::uint64_t callNumber) {
    const std::uint32_t serial = device ? device->serial() : kNoDevice;
    const Faults::Effect effect = Registry::instance().faults().onCall(serial, operation, callNumber);
    if (effect.delay.count() > 0) {
        if (device) {
            device->linger(effect.delay);
        } else {
            std::this_thread::sleep_for(effect.delay);
        }
    }
    require(effect.errorCode == kNoError, effect.errorCode);
    if (effect.unplugged == kNoDevice) {
        return;
    }
    Faults::unplugInMiddle(effect.unplugged);
    if (effect.unplugged != serial) {
        Faults::reachMiddleOfCall(); // the call continues
    } else if (!hasMiddle(operation)) {
        Faults::reachMiddleOfCall();
        throw Refusal{kCameraGone};
    }
}

std::uint32_t closeCamera(Operation operation, const void* handle) noexcept {
    return onHandle(operation, handle, std::uint32_t{0}, {}, [&](Session&) {
        const std::shared_ptr<Session> closed = Registry::instance().forget(handle);
        require(closed != nullptr, kInvalidArgument); // unless another thread has closed it
        closed->capture->close();
        return kSuccess;
    });
}

std::uint32_t readFlash(Operation operation, const void* handle, std::uint8_t* buffer, std::uint32_t address,
                        std::uint32_t length) noexcept {
    return onCamera(operation, handle, {static_cast<double>(address), static_cast<double>(length)},
                    [&](Session& session) {
                        require(buffer != nullptr || length == 0, kInvalidArgument);
                        session.device->hardware().flash().read(address, buffer, length);
                    });
}

} // namespace SoftwareDevices::Boundary
