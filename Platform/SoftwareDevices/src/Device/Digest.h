// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace SoftwareDevices {

/// The SHA-1 of data, by a library of the system rather than by the code that the devices test.
std::array<std::uint8_t, 20> sha1Of(const std::vector<std::uint8_t>& data);

} // namespace SoftwareDevices
