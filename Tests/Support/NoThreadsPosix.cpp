// SPDX-License-Identifier: Apache-2.0

#include "Support/NoThreads.h"

#include <cstddef>

#include <pthread.h>

namespace TestSupport {

namespace {

pthread_attr_t g_UsualThread{};

} // namespace

const bool NoThreads::isPossible = true;

NoThreads::NoThreads() {
    pthread_getattr_default_np(&g_UsualThread);
    pthread_attr_t impossible = g_UsualThread;
    pthread_attr_setstacksize(&impossible, std::size_t{1} << 47); // more than an address space holds
    pthread_setattr_default_np(&impossible);
}

NoThreads::~NoThreads() {
    pthread_setattr_default_np(&g_UsualThread);
}

} // namespace TestSupport
