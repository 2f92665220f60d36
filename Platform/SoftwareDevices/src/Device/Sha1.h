#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace SoftwareDevices {

std::array<std::uint8_t, 20> sha1(std::vector<std::uint8_t> message);

} // namespace SoftwareDevices
