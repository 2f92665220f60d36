// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "Cameras/Camera.h"
#include "Exceptions/SourceLocation.h"
#include "OrvexApi/OrvexRecords.h"

namespace OrvexAdapter {

/// Reads the settings of a run from the present values of the camera's properties.
/// @throws KestrelException "InvalidStreamSettings"  a property that a run needs is missing or invalid; thrown at @p
///     here
ORVEX_SNAPSHOT buildStreamSettings(CameraInterface::Camera& camera, const KestrelExceptions::SourceLocation& here);

/// The time that a camera takes for a frame, from the present values of its properties: exposure and frame period for
/// video, exposure and exposure delay for still captures. A value that cannot be read counts as 0.
std::chrono::nanoseconds getFrameTime(CameraInterface::Camera& camera, CameraInterface::StreamMode mode);

/// Converts to the time of a wait: zero for a negative number, and at most a century, which the clock can count.
std::chrono::nanoseconds toWaitingTime(double milliseconds);

/// Bits per pixel of a pixel format of the SDK.
/// @throws KestrelException "PropertyValueConversion"  not one of the SDK's codes
std::uint32_t getBitsPerPixel(std::uint32_t pixelFormat);

/// Bytes of a frame in any pixel format; the largest number if the size does not fit. Throws what getBitsPerPixel()
/// throws.
std::size_t getFrameSize(std::uint32_t width, std::uint32_t height, std::uint32_t pixelFormat);

} // namespace OrvexAdapter
