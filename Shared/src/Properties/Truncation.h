// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>

namespace OrvexAdapter {

/// Whether 32 bits hold a float without its fraction; false for NaN.
inline bool fitsInteger(float value) {
    return value >= -2147483648.0F && value < 2147483648.0F;
}

/// A float without its fraction; the lowest number if 32 bits cannot hold it.
inline std::int32_t truncate(float value) {
    return fitsInteger(value) ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

} // namespace OrvexAdapter
