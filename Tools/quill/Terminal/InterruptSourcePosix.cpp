// SPDX-License-Identifier: Apache-2.0

#include "Terminal/InterruptSource.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace QuillTool {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM};

std::atomic<void (*)()> s_Function{nullptr};
static_assert(std::atomic<void (*)()>::is_always_lock_free);

extern "C" void handleInterrupt(int /*signal*/) {
    const int savedError = errno;
    s_Function.load()();
    errno = savedError;
}

} // namespace

void callAtNextInterrupt(void (*function)()) {
    if (function != nullptr) { // a handler that runs now may still need it
        s_Function = function;
    }
    struct sigaction action = {};
    action.sa_handler = function == nullptr ? SIG_DFL : handleInterrupt;
    // Restarted calls keep libraries working that do not expect signals; poll() returns nevertheless.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : kSignals) {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace QuillTool
