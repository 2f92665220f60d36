// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace Base {

/// The present reading of the steady clock, in seconds.
inline double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace Base
