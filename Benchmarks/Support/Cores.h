// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

namespace Benchmarks {

/// Keeps the calling thread, and the threads that it starts, on one of its cores.
class PinnedToOneCore {
public:
    /// @throws std::runtime_error  there is one core only
    PinnedToOneCore();
    PinnedToOneCore(const PinnedToOneCore&) = delete;
    PinnedToOneCore& operator=(const PinnedToOneCore&) = delete;
    ~PinnedToOneCore();

private:
    cpu_set_t m_Before{};
};

/// Moves the calling thread to the core beside the one of PinnedToOneCore. Costs nothing when called again.
void moveToOtherCore();

} // namespace Benchmarks
