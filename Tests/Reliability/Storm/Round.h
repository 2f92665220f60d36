// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace Storm {

/// Lets each of six threads make this number of operations, on devices that are plugged for the round, and checks that
/// nothing is left. In rounds with an odd number, only one thread maintains the list, so that the callbacks of each
/// camera must alternate. Ends the process if a thread hangs.
void runRound(std::uint32_t number, std::uint32_t operations, std::size_t threadsAtStart);

} // namespace Storm
