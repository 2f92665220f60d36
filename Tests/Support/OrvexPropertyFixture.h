// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "OrvexApi/OrvexApi.h"
#include "Support/SoftwareDeviceFixture.h"

namespace TestSupport {

using Texts = std::vector<std::string>;

/// A fixture with one camera and access to its device's registers, format and flash.
class OrvexPropertyFixture : public SoftwareDeviceFixture {
protected:
    ~OrvexPropertyFixture() override { use(nullptr); }

    static SoftwareDevices::DeviceDescription color() { return SoftwareDevices::defaultDevices()[0]; }
    static SoftwareDevices::DeviceDescription timing() { return SoftwareDevices::defaultDevices()[2]; }
    /// Replaces the boundary of the devices; null restores their own.
    static void use(const OrvexAdapter::OrvexApi* api) {
        CameraInterface::Camera::unitialisedWorkpace();
        OrvexAdapter::useOrvexApi(api);
    }
    /// Connects a new camera on a new device, which replace the former ones.
    OrvexAdapter::OrvexCamera& connect(const SoftwareDevices::DeviceDescription& description) {
        CameraInterface::Camera::unitialisedWorkpace();
        SoftwareDevices::unplugAll();
        m_Serial = description.serial;
        m_Camera = &dynamic_cast<OrvexAdapter::OrvexCamera&>(open(description));
        return *m_Camera;
    }
    CameraInterface::Property& property(const std::string& name) { return m_Camera->getProperty(name); }
    /// The texts of minimum, maximum, default and value.
    static Texts textsOf(CameraInterface::Property& property) {
        return {property.getMinimum(), property.getMaximum(), property.getDefault(), property.getValue()};
    }
    /// The number of changes that a property reports during an action.
    template <typename Action>
    static int changesDuring(CameraInterface::Property& watched, Action action) {
        int changes = 0;
        watched.registerOnChangeCallback([&](CameraInterface::Property&) { ++changes; });
        action();
        watched.unregisterOnChangeCallback();
        return changes;
    }

    /// A register of the device.
    SoftwareDevices::PropertyRow at(std::uint32_t number) const { return SoftwareDevices::property(m_Serial, number); }
    /// Changes a register without the camera's knowledge.
    void put(const SoftwareDevices::PropertyRow& row) const { SoftwareDevices::setProperty(m_Serial, row); }
    /// Makes the next calls of an operation fail.
    void fail(SoftwareDevices::Operation operation, std::uint32_t count = 1, std::uint32_t error = 5) const {
        SoftwareDevices::failNext(m_Serial, operation, count, error);
    }

    OrvexAdapter::OrvexCamera* m_Camera = nullptr;
    std::uint32_t m_Serial = 0;
};

} // namespace TestSupport
