#pragma once

#include <cstdint>
#include <string>

#include <SoftwareDevices.h>

#include "Cameras/Camera.h"
#include "Support/CameraListFixture.h"

namespace TestSupport {

/// A fixture without devices, whose camera list asks for SDK cameras alone.
class SoftwareDeviceFixture : public CameraListFixture {
protected:
    SoftwareDeviceFixture();
    ~SoftwareDeviceFixture() override;

    /// Plugs a device in, finds its camera and connects it.
    static CameraInterface::Camera& open(const SoftwareDevices::DeviceDescription& description);
    static std::string value(CameraInterface::Camera& camera, const std::string& property);
    static void set(CameraInterface::Camera& camera, const std::string& property, const std::string& text);
};

} // namespace TestSupport
