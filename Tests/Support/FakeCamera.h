// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Cameras/CameraAdapters.h"

namespace TestSupport {

/// Cameras that a test plugs in and unplugs.
class FakeBus {
public:
    /// The state of a camera on the bus. Read by the watchdogs while the test changes it.
    struct Device {
        std::string serialNumber;
        std::string modelName = "Model F";
        std::atomic<bool> alive{true};
        std::atomic<bool> unreadable{false}; ///< the model name cannot be read
        std::atomic<int> objects{0};         ///< number of existing camera objects
    };

    std::shared_ptr<Device> plug(const std::string& serialNumber, const std::string& modelName = "Model F");
    void unplug(const std::string& serialNumber);
    /// Makes the enumeration throw until it is called with false.
    void failEnumeration(bool fail) { m_Fail = fail; }

    CameraInterface::CameraAdapter adapter();

private:
    std::vector<std::unique_ptr<CameraInterface::Camera>> enumerate();

    std::mutex m_Mutex; // guards the devices
    std::vector<std::shared_ptr<Device>> m_Devices;
    std::atomic<bool> m_Fail{false};
};

} // namespace TestSupport
