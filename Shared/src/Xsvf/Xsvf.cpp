// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Xsvf.h"

#include <utility>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Xsvf/XsvfPlay.h"

namespace Utilities {

using OrvexAdapter::OrvexCamera;

namespace {

JtagTransport transportOf(void* handle) {
    const OrvexAdapter::OrvexApi& api = OrvexAdapter::orvexApi();
    return {handle, api.sdkRegisterWrite, api.sdkRegisterRead};
}

} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the interface takes it so

bool playXsvf(void* handle, std::vector<unsigned char> data, XsvfReport& report,
              const std::function<void(double)>& progress) {
    return playXsvf(transportOf(handle), data, report, progress, [handle] { return !OrvexCamera::isAlive(handle); });
}

bool playXsvf(void* handle, std::vector<unsigned char> data) {
    XsvfReport report;
    playXsvf(transportOf(handle), data, report, {});
    return report.opened && report.error == XsvfError::None;
}

bool canPlayXsvf(const CameraInterface::Camera& camera) {
    return dynamic_cast<const OrvexCamera*>(&camera) != nullptr;
}

bool playXsvf(CameraInterface::Camera& camera, std::vector<unsigned char> data, XsvfReport& report,
              const std::function<void(double)>& progress) {
    using namespace KestrelExceptions;
    auto* const orvexCamera = dynamic_cast<OrvexCamera*>(&camera);
    if (orvexCamera == nullptr) {
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionUnsupported, "Jtag");
    }
    void* const handle = orvexCamera->getHandle();
    if (handle == nullptr) {
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionExecution, "Jtag");
    }
    return playXsvf(handle, std::move(data), report, progress);
}

XsvfReport checkXsvf(std::vector<unsigned char> data) {
    XsvfReport report;
    runXsvf({}, data, XsvfPlayer::Comparison::AlwaysEqual, report, {}, {});
    return report;
}

// NOLINTEND(performance-unnecessary-value-param)

} // namespace Utilities
