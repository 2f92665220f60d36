// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Exit/Unload.h"

#include <string>

#include <SoftwareDevices.h>
#include <windows.h>

// The library stays, since its threads could not end while it is unloaded, and serves the next module. The process
// exits with a live stream.
bool unloadsAgainAndAgain(const char* module, const char* library, std::uint32_t serial) {
    for (int cycle = 0; cycle < 20; ++cycle) {
        const HMODULE loaded = LoadLibraryA(module);
        void* const symbol = loaded == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(loaded, "useQuill"));
        auto* const use = reinterpret_cast<bool (*)(const char*)>(symbol);
        if (use == nullptr || !use(std::to_string(serial).c_str()) || !SoftwareDevices::isStreaming(serial) ||
            FreeLibrary(loaded) == 0 || GetModuleHandleA(module) != nullptr || GetModuleHandleA(library) == nullptr) {
            return false;
        }
    }
    return true;
}
