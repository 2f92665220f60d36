// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// Thrown by the devices when they refuse a call; the boundary turns it into the call's failure value and last error.
struct Refusal {
    std::uint32_t code;
};

inline void require(bool condition, std::uint32_t code) {
    if (!condition) {
        throw Refusal{code};
    }
}

} // namespace SoftwareDevices
