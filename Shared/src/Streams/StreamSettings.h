// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "Cameras/Camera.h"
#include "Exceptions/SourceLocation.h"
#include "OrvexApi/OrvexRecords.h"

namespace OrvexAdapter {

/// The settings of a run, read from the camera's properties as they are now.
/// @throws KestrelException "InvalidStreamSettings"  a property that a run needs is missing, or cannot be understood;
///     thrown at @p here
ORVEX_SNAPSHOT buildStreamSettings(CameraInterface::Camera& camera, const KestrelExceptions::SourceLocation& here);

/// How long a camera takes for a frame, from its properties as they are now: in video exposure and frame period, in
/// still mode exposure and exposure delay. What cannot be read counts as nothing.
std::chrono::nanoseconds getFrameTime(CameraInterface::Camera& camera, CameraInterface::StreamMode mode);

/// The time of a wait: none for a negative number, and a century at most, which the clock can count.
std::chrono::nanoseconds toWaitingTime(double milliseconds);

/// Bits that one pixel takes in a pixel format of the SDK.
/// @throws KestrelException "PropertyValueConversion"  not one of the SDK's codes
std::uint32_t getBitsPerPixel(std::uint32_t pixelFormat);

/// Bytes of a frame, in every pixel format; the largest number for one that no number of bytes holds. Throws like
/// getBitsPerPixel().
std::size_t getFrameSize(std::uint32_t width, std::uint32_t height, std::uint32_t pixelFormat);

} // namespace OrvexAdapter
