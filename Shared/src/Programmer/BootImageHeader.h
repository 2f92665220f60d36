// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

namespace Utilities {

inline constexpr std::size_t kBootImageHeaderBytes = 4;

/// Whether data begins with the header of a boot image; checks the header only.
bool hasBootImageHeader(const std::vector<unsigned char>& data);

/// @throws std::invalid_argument "No data provided."
void requireData(const std::vector<unsigned char>& data);
/// @throws std::invalid_argument "Invalid image file."
void requireBootImage(bool isBootImage);

} // namespace Utilities
