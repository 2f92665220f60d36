// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Device/Flash.h"

namespace SoftwareDevices {

// What the flash says of USB3 Vision: an information block, and the file that the block vouches for.

constexpr std::uint32_t kUsb3VisionFileAddress = 0x1B8000;

/// Stores the file and its block; the device goes on starting as an SDK camera.
void storeUsb3VisionFile(Flash& flash, const std::vector<std::uint8_t>& file);

/// Whether a device with this flash starts as a USB3 Vision camera: the block says so, and its file is intact.
bool startsAsUsb3Vision(const Flash& flash);

/// Changes the block's mode and nothing else.
void setUsb3VisionMode(Flash& flash, bool enabled);

} // namespace SoftwareDevices
