// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace OrvexAdapter {

// Command numbers of the camera SDK.
inline constexpr std::uint8_t kRebootCommand = 0x1B;
inline constexpr std::uint8_t kFlashStatusCommand = 0x1C;

} // namespace OrvexAdapter
