// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Interrupt.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include <poll.h>

namespace QuillTool {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM};

std::atomic<bool> s_Requested{false};
std::atomic<const WakePipe*> s_Pipe{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const WakePipe*>::is_always_lock_free);

extern "C" void requestInterrupt(int /*signal*/) {
    const int savedError = errno;
    s_Requested = true;
    if (const WakePipe* pipe = s_Pipe) {
        pipe->wake();
    }
    errno = savedError;
}

void handleSignals(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    // Restarted calls keep libraries working that do not expect signals; poll() returns nevertheless.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : kSignals) {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

Interrupt::Interrupt() {
    s_Pipe = &m_Pipe;
    handleSignals(requestInterrupt);
}

Interrupt::~Interrupt() {
    handleSignals(SIG_DFL);
    s_Pipe = nullptr;
}

bool Interrupt::requested() const {
    return s_Requested;
}

void Interrupt::clear() {
    m_Pipe.drain();
    s_Requested = false;
    handleSignals(requestInterrupt);
}

bool Interrupt::waitReadable(int descriptor) const {
    std::array<pollfd, 2> waiting{pollfd{m_Pipe.descriptor(), POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    while (!requested()) {
        if (poll(waiting.data(), waiting.size(), -1) > 0 && waiting[0].revents == 0) {
            return true; // bytes, end of file or an error, which reading reports
        }
    }
    return false;
}

} // namespace QuillTool
