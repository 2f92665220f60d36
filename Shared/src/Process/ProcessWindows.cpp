// SPDX-License-Identifier: Apache-2.0

#include "Process/Process.h"

#include <cstdlib>

#include <windows.h>

namespace Process {

namespace {

using ShutdownInProgress = unsigned char(NTAPI*)();

/// Exported by the system since Windows XP; without it, threads count as running.
ShutdownInProgress shutdownInProgress() {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system == nullptr ? nullptr
                             : reinterpret_cast<ShutdownInProgress>(
                                   reinterpret_cast<void*>(GetProcAddress(system, "RtlDllShutdownInProgress")));
}

} // namespace

int number() {
    return static_cast<int>(GetCurrentProcessId());
}

const char* environmentVariable(const char* name) {
    return std::getenv(name);
}

void callInForkedChild(void (* /*function*/)()) {}

void keepThisLibraryLoaded() {
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&keepThisLibraryLoaded), &library);
}

// Static objects are destroyed under the loader's lock, which a thread needs in order to end.
void keepThisLibraryWithItsThreads() {
    keepThisLibraryLoaded();
}

bool hasOtherThreads() {
    static const ShutdownInProgress isEnding = shutdownInProgress();
    return isEnding == nullptr || isEnding() == 0;
}

} // namespace Process
