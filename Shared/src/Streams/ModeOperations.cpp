// SPDX-License-Identifier: Apache-2.0

#include "Streams/ModeOperations.h"

namespace OrvexAdapter {

namespace {

constexpr ModeOperations kVideoOperations{
    "video",
    &OrvexApi::sdkAddStreamingCallback,
    &OrvexApi::sdkRemoveStreamingCallback,
    [](const OrvexApi& api, void* handle) { return api.sdkStreamVideoControl(handle, 0, 0); },
    &OrvexApi::sdkCancelVideoCapture,
    [](const OrvexApi& api, void* handle, std::uint8_t* buffer) {
        return api.sdkCaptureVideoFrames(handle, 1, buffer);
    },
    &OrvexApi::sdkGetVideoImageFormat,
};

constexpr ModeOperations kStillOperations{
    "still",
    &OrvexApi::sdkAddStillCallback,
    &OrvexApi::sdkRemoveStillCallback,
    [](const OrvexApi& api, void* handle) { return api.sdkDisableStillMode(handle); },
    &OrvexApi::sdkCancelStillCapture,
    [](const OrvexApi& api, void* handle, std::uint8_t* buffer) { return api.sdkCaptureStillFrame(handle, buffer); },
    &OrvexApi::sdkGetStillImageFormat,
};

} // namespace

const ModeOperations& operationsOf(CameraInterface::StreamMode mode) {
    return mode == CameraInterface::StreamMode::Video ? kVideoOperations : kStillOperations;
}

} // namespace OrvexAdapter
