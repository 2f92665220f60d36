// SPDX-License-Identifier: Apache-2.0

#include "Base/Cores.h"

#include <sched.h>

namespace Base {

int currentCore() {
    return sched_getcpu();
}

void leaveCore(int core) {
    cpu_set_t allowed;
    if (core < 0 || core >= CPU_SETSIZE || currentCore() != core ||
        sched_getaffinity(0, sizeof(allowed), &allowed) != 0 || CPU_COUNT(&allowed) < 2) {
        return;
    }
    cpu_set_t others = allowed;
    CPU_CLR(core, &others);
    sched_setaffinity(0, sizeof(others), &others);
    sched_setaffinity(0, sizeof(allowed), &allowed);
}

} // namespace Base
