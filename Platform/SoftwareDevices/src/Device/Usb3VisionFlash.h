// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Device/Flash.h"

namespace SoftwareDevices {

// The USB3 Vision data in the flash: an information block, and the file that the block describes.

constexpr std::uint32_t kUsb3VisionFileAddress = 0x1B8000;

/// Stores the file and its block; the device still starts as an SDK camera.
void storeUsb3VisionFile(Flash& flash, const std::vector<std::uint8_t>& file);

/// Whether a device with this flash starts as a USB3 Vision camera: the block selects that, and its file is intact.
bool startsAsUsb3Vision(const Flash& flash);

/// Changes only the mode in the block.
void setUsb3VisionMode(Flash& flash, bool enabled);

} // namespace SoftwareDevices
