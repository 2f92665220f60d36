// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Exit/Unload.h"

#include <string>
#include <thread>

#include <SoftwareDevices.h>
#include <dlfcn.h>

#include "Support/Event.h"
#include "Support/ProcessFigures.h"

using TestSupport::residentBytes;
using TestSupport::threadsOfProcess;

// The library goes with its last user, and its threads, memory and camera with it.
bool unloadsAgainAndAgain(const char* module, const char* library, std::uint32_t serial) {
    std::thread([] {}).join(); // a sanitizer adds a thread of its own to the first one
    const std::size_t threadsBefore = threadsOfProcess();
    std::size_t residentEarly = 0;
    for (int cycle = 0; cycle < 20; ++cycle) {
        void* const loaded = dlopen(module, RTLD_NOW);
        auto* const use = loaded ? reinterpret_cast<bool (*)(const char*)>(dlsym(loaded, "useQuill")) : nullptr;
        if (use == nullptr || !use(std::to_string(serial).c_str()) || !SoftwareDevices::isStreaming(serial) ||
            dlclose(loaded) != 0) {
            return false;
        }
        const bool isLoaded = dlopen(library, RTLD_NOW | RTLD_NOLOAD) != nullptr;
        // A joined thread may still be listed for a moment.
        const bool areThreadsGone = TestSupport::eventually([&] { return threadsOfProcess() == threadsBefore; });
        if (isLoaded || SoftwareDevices::isOpen(serial) || !areThreadsGone) {
            return false;
        }
        residentEarly = cycle == 1 ? residentBytes() : residentEarly;
    }
#ifdef QUILL_SANITIZED // freed memory is kept for a while
    return true;
#else
    // A frame has more than a megabyte, so buffers of runs that stay would show.
    return residentBytes() <= residentEarly + (10U << 20);
#endif
}
