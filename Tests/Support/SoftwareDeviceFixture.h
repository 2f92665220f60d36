// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include <SoftwareDevices.h>

#include "Cameras/Camera.h"
#include "Support/CameraListFixture.h"

namespace TestSupport {

/// A fixture without devices, whose camera list has the adapters of SDK and USB3 Vision cameras.
class SoftwareDeviceFixture : public CameraListFixture {
protected:
    SoftwareDeviceFixture();
    ~SoftwareDeviceFixture() override;

    /// Plugs a device in, finds its camera and connects it.
    static CameraInterface::Camera& open(const SoftwareDevices::DeviceDescription& description);
    /// The same for a device that has started as a USB3 Vision camera.
    static CameraInterface::Camera& openUsb3Vision(const SoftwareDevices::DeviceDescription& description);
    static std::string value(CameraInterface::Camera& camera, const std::string& property);
    static void set(CameraInterface::Camera& camera, const std::string& property, const std::string& text);
    /// A small region keeps frames quick to compute, above all under a sanitizer on a busy machine.
    static void setRegion(CameraInterface::Camera& camera, unsigned width, unsigned height);
};

} // namespace TestSupport
