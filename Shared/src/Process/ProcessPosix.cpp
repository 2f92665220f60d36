// SPDX-License-Identifier: Apache-2.0

#include "Process/Process.h"

#include <cstdlib>
#include <system_error>

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace Process {

int number() {
    return static_cast<int>(getpid());
}

const char* environmentVariable(const char* name) {
    return secure_getenv(name);
}

void callInForkedChild(void (*function)()) {
    if (const int error = pthread_atfork(nullptr, nullptr, function)) {
        throw std::system_error(error, std::generic_category());
    }
}

void keepThisLibraryLoaded() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&keepThisLibraryLoaded), &info) != 0 && info.dli_fname != nullptr) {
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
}

void keepThisLibraryWithItsThreads() {}

bool hasOtherThreads() {
    return true;
}

} // namespace Process
