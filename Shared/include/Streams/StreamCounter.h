// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace CameraInterface {

/// A counter that says what it counts. It only grows, unless its description says otherwise.
struct StreamCounter {
    std::string name;        ///< such as "Captured"
    std::uint64_t value = 0; ///< frames, unless the description names another unit
    std::string description; ///< one sentence
    bool isLoss = false;     ///< it counts frames that somebody did not get
};

} // namespace CameraInterface
