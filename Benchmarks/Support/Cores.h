// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

namespace Benchmarks {

/// Pins the calling thread, and the threads that it starts, to one of its cores.
class PinnedToOneCore {
public:
    /// @throws std::runtime_error  there is only one core
    PinnedToOneCore();
    PinnedToOneCore(const PinnedToOneCore&) = delete;
    PinnedToOneCore& operator=(const PinnedToOneCore&) = delete;
    ~PinnedToOneCore();

private:
    cpu_set_t m_Before{};
};

/// Moves the calling thread to a core other than that of PinnedToOneCore. Further calls cost nothing.
void moveToOtherCore();

} // namespace Benchmarks
