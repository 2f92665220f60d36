// SPDX-License-Identifier: Apache-2.0

#include "Base/ForkedChild.h"

#include <system_error>

#include <pthread.h>
#include <unistd.h>

namespace Base {

void callInForkedChild(void (*function)()) {
    if (const int error = pthread_atfork(nullptr, nullptr, function)) {
        throw std::system_error(error, std::generic_category());
    }
}

int processNumber() {
    return static_cast<int>(getpid());
}

} // namespace Base
