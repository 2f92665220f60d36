#include <utility>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Utilities/Xsvf.h"
#include "Utilities/XsvfPlay.h"

// The player over the JTAG port of SDK cameras.

namespace Utilities {

using OrvexAdapter::OrvexCamera;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes it so
bool playXsvf(void* handle, std::vector<unsigned char> data, XsvfReport& report,
              const std::function<void(double)>& progress) {
    const OrvexAdapter::OrvexApi& api = OrvexAdapter::orvexApi();
    return playXsvf(JtagTransport{handle, api.sdkRegisterWrite, api.sdkRegisterRead}, data, report, progress);
}

bool playXsvf(void* handle, std::vector<unsigned char> data) {
    XsvfReport report;
    return playXsvf(handle, std::move(data), report);
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

} // namespace Utilities
