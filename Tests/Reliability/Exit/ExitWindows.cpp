// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>

#include <windows.h>

#include "Reliability/Exit/Exit.h"

void exitAtOnce() {
    ExitProcess(EXIT_SUCCESS);
}

std::vector<WayToExit> waysOfThisPlatform() {
    return {};
}
