// SPDX-License-Identifier: Apache-2.0

// Loads a module that uses the library, and unloads it while a stream and the watching threads run, again and again.

#include <cstdlib>
#include <string>
#include <thread>

#include <SoftwareDevices.h>
#include <dlfcn.h>

#include "Support/Event.h"
#include "Support/ProcessFigures.h"

using TestSupport::residentBytes;
using TestSupport::threadsOfProcess;

int main(int argc, char** argv) {
    if (argc != 3) {
        return EXIT_FAILURE;
    }
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
    device.sensorWidth = 1280;
    device.sensorHeight = 1024;
    const std::uint32_t serial = SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
    std::thread([] {}).join(); // a sanitizer adds a thread of its own to the first one
    const std::size_t threadsBefore = threadsOfProcess();
    std::size_t residentEarly = 0;
    for (int cycle = 0; cycle < 20; ++cycle) {
        void* const module = dlopen(argv[1], RTLD_NOW);
        auto* const use = module ? reinterpret_cast<bool (*)(const char*)>(dlsym(module, "useQuill")) : nullptr;
        if (use == nullptr || !use(std::to_string(serial).c_str()) || !SoftwareDevices::isStreaming(serial) ||
            dlclose(module) != 0) {
            return EXIT_FAILURE;
        }
        const bool isLoaded = dlopen(argv[2], RTLD_NOW | RTLD_NOLOAD) != nullptr;
        // A joined thread may still be listed for a moment.
        const bool areThreadsGone = TestSupport::eventually([&] { return threadsOfProcess() == threadsBefore; });
        if (isLoaded || SoftwareDevices::isOpen(serial) || !areThreadsGone) {
            return EXIT_FAILURE;
        }
        residentEarly = cycle == 1 ? residentBytes() : residentEarly;
    }
#ifndef QUILL_SANITIZED // these keep freed memory for a while
    // A frame has more than a megabyte, so buffers of runs that stay would show.
    if (residentBytes() > residentEarly + (10U << 20)) {
        return EXIT_FAILURE;
    }
#endif
    return EXIT_SUCCESS;
}
