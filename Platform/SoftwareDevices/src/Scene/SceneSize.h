// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace SoftwareDevices {

constexpr std::uint32_t kDefaultSceneWidth = 1024;
constexpr std::uint32_t kDefaultSceneHeight = 768;
constexpr std::size_t kDefaultSceneBytes = std::size_t{kDefaultSceneWidth} * kDefaultSceneHeight * 3;

} // namespace SoftwareDevices
