#pragma once

#include <cstdint>
#include <limits>

namespace OrvexAdapter {

/// A float without its fraction; the lowest number for what 32 bits cannot hold.
inline std::int32_t truncate(float value) {
    const bool fits = value >= -2147483648.0F && value < 2147483648.0F;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

} // namespace OrvexAdapter
