// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

#include <SoftwareDevices.h>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "OrvexApi/OrvexApi.h"

namespace Benchmarks {

/// A connected camera behind the boundary of the SDK. One at a time.
class SdkCamera {
public:
    /// @param replace puts other operations into the table through which the library calls
    /// @param device 5 megapixels in colour where nothing else is said
    explicit SdkCamera(const std::function<void(OrvexAdapter::OrvexApi&)>& replace = {},
                       const SoftwareDevices::DeviceDescription& device = SoftwareDevices::defaultDevices().front());
    SdkCamera(const SdkCamera&) = delete;
    SdkCamera& operator=(const SdkCamera&) = delete;
    ~SdkCamera();

    /// A camera object of its own for the same device.
    std::unique_ptr<OrvexAdapter::OrvexCamera> makeDisconnected() const;

    OrvexAdapter::OrvexCamera* operator->() { return m_Camera.get(); }
    OrvexAdapter::OrvexCamera& operator*() { return *m_Camera; }

private:
    OrvexAdapter::OrvexApi m_Api;
    ORVEX_VERSION m_Version{};
    std::unique_ptr<OrvexAdapter::OrvexCamera> m_Camera;
};

} // namespace Benchmarks
