// SPDX-License-Identifier: Apache-2.0

#include "Terminal/InterruptSource.h"

#include <atomic>

#include <windows.h>

namespace QuillTool {

namespace {

std::atomic<void (*)()> s_Function{nullptr};

/// Runs on a thread of its own. Without a function, the system ends the process.
BOOL WINAPI handleInterrupt(DWORD /*event*/) {
    void (*const function)() = s_Function.exchange(nullptr);
    if (function == nullptr) {
        return FALSE;
    }
    function();
    return TRUE;
}

} // namespace

void callAtNextInterrupt(void (*function)()) {
    static const bool isHandling = SetConsoleCtrlHandler(handleInterrupt, TRUE) != 0;
    static_cast<void>(isHandling);
    s_Function = function;
}

} // namespace QuillTool
