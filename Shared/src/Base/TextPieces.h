// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Base {

/// The pieces between the separators of a text, one more than there are separators.
std::vector<std::string> split(const std::string& text, char separator);

/// The lowest @p count bytes of a number, most significant first, in decimal and joined by ".".
std::string dottedBytes(std::uint32_t value, int count);

} // namespace Base
