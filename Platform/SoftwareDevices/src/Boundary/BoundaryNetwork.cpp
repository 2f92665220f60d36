// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "Boundary/BoundaryCall.h"

// Network settings of the cameras on the selected interface; no camera needs to be open.

namespace SoftwareDevices::Boundary {

namespace {

template <class Body>
uint32_t onListedCamera(Operation operation, int32_t index, Body body) noexcept {
    std::shared_ptr<Device> device;
    try {
        device = Registry::instance().enumerated(index > 0 ? static_cast<std::uint64_t>(index) : 0);
    } catch (...) { // no memory: as if there were no camera
    }
    return perform(operation, device.get(), nullptr, uint32_t{0}, {static_cast<double>(index)}, [&] {
        require(device != nullptr, kInvalidArgument);
        device->requirePresent();
        body(device->hardware());
        return kSuccess;
    });
}

} // namespace

uint32_t sdkGetEthernetInfo(int32_t index, uint8_t* cameraMac, uint32_t* cameraAddresses, uint8_t* hostMac,
                            uint32_t* hostAddresses) noexcept {
    return onListedCamera(Operation::sdkGetEthernetInfo, index, [&](Hardware& hardware) {
        requirePointer(cameraMac);
        requirePointer(cameraAddresses);
        requirePointer(hostMac);
        requirePointer(hostAddresses);
        const NetworkSettings network = hardware.network();
        std::copy(network.cameraMac.begin(), network.cameraMac.end(), cameraMac);
        std::copy(network.cameraAddresses.begin(), network.cameraAddresses.end(), cameraAddresses);
        std::copy(network.hostMac.begin(), network.hostMac.end(), hostMac);
        std::copy(network.hostAddresses.begin(), network.hostAddresses.end(), hostAddresses);
    });
}

uint32_t sdkSetEthernetInfo(int32_t index, const uint32_t* cameraAddresses) noexcept {
    return onListedCamera(Operation::sdkSetEthernetInfo, index, [&](Hardware& hardware) {
        requirePointer(cameraAddresses);
        hardware.setCameraAddresses({cameraAddresses[0], cameraAddresses[1], cameraAddresses[2]});
    });
}

} // namespace SoftwareDevices::Boundary
