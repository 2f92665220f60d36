// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace Storm {

/// Lets six threads make so many operations each, on devices that are plugged for it, and sees that nothing is left. In
/// rounds with an odd number the list is kept by one thread alone, so that the callbacks of each camera must alternate.
/// Ends the process where a thread does not come back.
void runRound(std::uint32_t number, std::uint32_t operations, std::size_t threadsAtStart);

} // namespace Storm
