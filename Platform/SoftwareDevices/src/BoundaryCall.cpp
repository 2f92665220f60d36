#include "BoundaryCall.h"

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
    if (effect.unplugs && device) {
        Faults::unplugInMiddle(serial);
        if (!hasMiddle(operation)) {
            Faults::reachMiddleOfCall();
            throw Refusal{kCameraGone};
        }
    }
}

} // namespace SoftwareDevices::Boundary
