// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "OrvexApi/OrvexApi.h"
#include "Streams/Stream.h"

namespace OrvexAdapter {

/// The SDK's operations for one mode of a stream; the parameters are the same in both.
struct ModeOperations {
    const char* word; ///< the name of the mode in exceptions
    std::int32_t (*OrvexApi::*addCallback)(void* handle, ORVEX_FRAME_CALLBACK callback, void* context);
    std::uint32_t (*OrvexApi::*removeCallback)(void* handle, std::int32_t id);
    std::uint32_t (*stop)(const OrvexApi& api, void* handle);
    std::uint32_t (*OrvexApi::*cancelCapture)(void* handle);
    std::uint32_t (*capture)(const OrvexApi& api, void* handle, std::uint8_t* buffer);
    std::uint32_t (*OrvexApi::*getImageFormat)(void* handle, ORVEX_IMAGE_FORMAT* format);
};

const ModeOperations& operationsOf(CameraInterface::StreamMode mode);

} // namespace OrvexAdapter
