// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "Boundary/BoundaryCall.h"

// Enumeration, opening, identity.

namespace SoftwareDevices::Boundary {

uint32_t sdkSelectInterface(uint32_t interfaceNumber) noexcept {
    return onModule(Operation::sdkSelectInterface, uint32_t{0}, {static_cast<double>(interfaceNumber)}, [&] {
        Registry::instance().selectInterface(interfaceNumber);
        return kSuccess;
    });
}

int32_t sdkNumCameras() noexcept {
    return onModule(Operation::sdkNumCameras, int32_t{0}, {},
                    [] { return static_cast<int32_t>(Registry::instance().enumeration(Library::CameraSdk).size()); });
}

int32_t sdkEnumCameras(ORVEX_VERSION* versions, uint32_t count) noexcept {
    return onModule(Operation::sdkEnumCameras, int32_t{0}, {static_cast<double>(count)}, [&] {
        requirePointer(versions);
        const auto present = Registry::instance().enumeration(Library::CameraSdk);
        const std::size_t filled = std::min<std::size_t>(present.size(), count);
        for (std::size_t i = 0; i < filled; ++i) {
            versions[i] = present[i]->version();
        }
        return static_cast<int32_t>(filled);
    });
}

void* sdkCameraOpen(uint32_t index) noexcept {
    return openCamera(Operation::sdkCameraOpen, {static_cast<double>(index)},
                      [index] { return Registry::instance().enumerated(index); });
}

uint32_t sdkCameraClose(void* handle) noexcept {
    return closeCamera(Operation::sdkCameraClose, handle);
}

uint32_t sdkPostOpenSetup(void* handle, uint32_t value) noexcept {
    return onCamera(Operation::sdkPostOpenSetup, handle, {static_cast<double>(value)}, [](Session&) {});
}

uint32_t sdkQueryVersion(void* handle, ORVEX_VERSION* version) noexcept {
    return onCamera(Operation::sdkQueryVersion, handle, {}, [&](Session& session) {
        requirePointer(version);
        *version = session.device->version();
    });
}

uint32_t sdkGetCameraId(void* handle, uint32_t* id) noexcept {
    return onCamera(Operation::sdkGetCameraId, handle, {}, [&](Session& session) {
        requirePointer(id);
        *id = session.device->description().cameraId;
    });
}

uint32_t sdkGetHardwareRevision(void* handle, uint32_t* revision) noexcept {
    return onCamera(Operation::sdkGetHardwareRevision, handle, {}, [&](Session& session) {
        requirePointer(revision);
        *revision = session.device->description().hardwareRevision;
    });
}

uint32_t sdkGetHardwareInterface(void* handle, uint32_t* interfaceNumber) noexcept {
    return onCamera(Operation::sdkGetHardwareInterface, handle, {}, [&](Session& session) {
        requirePointer(interfaceNumber);
        require(session.device->description().hardwareInterface != 0, kUnsupported);
        *interfaceNumber = session.device->description().hardwareInterface;
    });
}

uint32_t sdkGetLastErrorForCamera(void* handle) noexcept {
    return onHandle(Operation::sdkGetLastErrorForCamera, handle, uint32_t{0}, {},
                    [](Session& session) { return session.lastError.load(); });
}

} // namespace SoftwareDevices::Boundary
