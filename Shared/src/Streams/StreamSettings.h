#pragma once

#include <cstddef>
#include <cstdint>

#include "Cameras/Camera.h"
#include "OrvexApi/OrvexRecords.h"

namespace OrvexAdapter {

/// The settings of a run, read from the camera's properties as they are now.
/// @throws KestrelException "InvalidStreamSettings"  a property that a run needs is missing, or cannot be understood
ORVEX_SNAPSHOT buildStreamSettings(CameraInterface::Camera& camera);

/// Bits that one pixel takes in a pixel format of the SDK.
/// @throws KestrelException "PropertyValueConversion"  not one of the SDK's codes
std::uint32_t getBitsPerPixel(std::uint32_t pixelFormat);

/// Bytes of a frame, in every pixel format. Throws like getBitsPerPixel().
std::size_t getFrameSize(std::uint32_t width, std::uint32_t height, std::uint32_t pixelFormat);

} // namespace OrvexAdapter
