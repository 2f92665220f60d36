// SPDX-License-Identifier: Apache-2.0

#include "Support/Cores.h"

#include <array>
#include <stdexcept>

namespace Benchmarks {

namespace {

/// The first two cores on which this process may run.
std::array<int, 2> findCores(const cpu_set_t& allowed) {
    std::array<int, 2> cores{};
    std::size_t found = 0;
    for (int core = 0; core < CPU_SETSIZE && found < cores.size(); ++core) {
        if (CPU_ISSET(core, &allowed)) {
            cores[found++] = core;
        }
    }
    if (found < cores.size()) {
        throw std::runtime_error("Two cores are needed to measure what two threads do together.");
    }
    return cores;
}

std::array<int, 2>& chosenCores() {
    static std::array<int, 2> cores{};
    return cores;
}

void stayOn(int core) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(core, &set);
    sched_setaffinity(0, sizeof set, &set);
}

} // namespace

PinnedToOneCore::PinnedToOneCore() {
    sched_getaffinity(0, sizeof m_Before, &m_Before);
    chosenCores() = findCores(m_Before);
    stayOn(chosenCores()[0]);
}

PinnedToOneCore::~PinnedToOneCore() {
    sched_setaffinity(0, sizeof m_Before, &m_Before);
}

void moveToOtherCore() {
    thread_local bool moved = false;
    if (!moved) {
        stayOn(chosenCores()[1]);
        moved = true;
    }
}

} // namespace Benchmarks
