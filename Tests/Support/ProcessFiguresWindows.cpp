// SPDX-License-Identifier: Apache-2.0

#include "Support/ProcessFigures.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

namespace TestSupport {

std::size_t residentBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.WorkingSetSize;
}

std::size_t threadsOfProcess() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0); // of all processes
    THREADENTRY32 thread{};
    thread.dwSize = sizeof(thread);
    std::size_t count = 0;
    for (BOOL has = Thread32First(snapshot, &thread); has != 0; has = Thread32Next(snapshot, &thread)) {
        count += thread.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

std::size_t openDescriptors() {
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return handles;
}

std::size_t allocatedBytes() {
    return 0;
}

} // namespace TestSupport
