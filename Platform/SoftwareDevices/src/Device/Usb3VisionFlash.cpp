// SPDX-License-Identifier: Apache-2.0

#include "Device/Usb3VisionFlash.h"

#include <algorithm>
#include <array>

#include "Device/Digest.h"

namespace SoftwareDevices {

namespace {

constexpr std::uint32_t kBlockAddress = 0x1B0000;
constexpr std::size_t kModeOffset = 0;
constexpr std::size_t kSizeOffset = 4;
constexpr std::size_t kDigestOffset = 12;
constexpr std::uint8_t kModeEnabled = 0;
constexpr std::uint8_t kModeDisabled = 0xFF;

using Block = std::array<std::uint8_t, 96>;

} // namespace

void storeUsb3VisionFile(Flash& flash, const std::vector<std::uint8_t>& file) {
    Block block{};
    block.fill(0xFF);
    block[kModeOffset] = kModeDisabled;
    for (std::size_t i = 0; i < 4; ++i) {
        block[kSizeOffset + i] = static_cast<std::uint8_t>(file.size() >> (8 * i));
    }
    const auto digest = sha1Of(file);
    std::copy(digest.begin(), digest.end(), block.begin() + kDigestOffset);
    flash.rewrite(kBlockAddress, block.data(), static_cast<std::uint32_t>(block.size()));
    flash.rewrite(kUsb3VisionFileAddress, file.data(), static_cast<std::uint32_t>(file.size()));
}

bool startsAsUsb3Vision(const Flash& flash) {
    Block block{};
    flash.read(kBlockAddress, block.data(), static_cast<std::uint32_t>(block.size()));
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        size |= std::uint32_t{block[kSizeOffset + i]} << (8 * i);
    }
    if (block[kModeOffset] != kModeEnabled || size == 0 || size > kFlashSize - kUsb3VisionFileAddress) {
        return false;
    }
    std::vector<std::uint8_t> file(size);
    flash.read(kUsb3VisionFileAddress, file.data(), size);
    const auto digest = sha1Of(file);
    return std::equal(digest.begin(), digest.end(), block.begin() + kDigestOffset);
}

void setUsb3VisionMode(Flash& flash, bool enabled) {
    const std::uint8_t mode = enabled ? kModeEnabled : kModeDisabled;
    flash.rewrite(kBlockAddress + kModeOffset, &mode, 1);
}

} // namespace SoftwareDevices
