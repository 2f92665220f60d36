// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Storm/Tally.h"

#include <cstdio>

namespace Storm {

Tally& tally() {
    static Tally tally;
    return tally;
}

void require(bool condition, const std::string& what) {
    if (!condition && !tally().failed.exchange(true)) {
        std::fprintf(stderr, "seed %u: %s\n", tally().seed, what.c_str());
    }
}

} // namespace Storm
