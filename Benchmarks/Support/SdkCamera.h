// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

#include <SoftwareDevices.h>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "OrvexApi/OrvexApi.h"

namespace Benchmarks {

/// A connected camera behind the boundary of the SDK. Only one may exist at a time.
class SdkCamera {
public:
    /// @param replace replaces operations in the table that the library uses
    /// @param device 5 megapixels in colour by default
    explicit SdkCamera(const std::function<void(OrvexAdapter::OrvexApi&)>& replace = {},
                       const SoftwareDevices::DeviceDescription& device = SoftwareDevices::defaultDevices().front());
    SdkCamera(const SdkCamera&) = delete;
    SdkCamera& operator=(const SdkCamera&) = delete;
    ~SdkCamera();

    /// Makes another camera object for the same device.
    std::unique_ptr<OrvexAdapter::OrvexCamera> makeDisconnected() const;

    OrvexAdapter::OrvexCamera* operator->() { return m_Camera.get(); }
    OrvexAdapter::OrvexCamera& operator*() { return *m_Camera; }

private:
    OrvexAdapter::OrvexApi m_Api;
    ORVEX_VERSION m_Version{};
    std::unique_ptr<OrvexAdapter::OrvexCamera> m_Camera;
};

} // namespace Benchmarks
