// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Interrupt.h"

#include <atomic>

#include "Terminal/InterruptSource.h"

namespace QuillTool {

namespace {

std::atomic<bool> s_Requested{false};
std::atomic<const Waker*> s_Waker{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const Waker*>::is_always_lock_free);

void request() {
    s_Requested = true;
    if (const Waker* waker = s_Waker) {
        waker->wake();
    }
}

} // namespace

Interrupt::Interrupt() {
    s_Waker = &m_Waker;
    callAtNextInterrupt(request);
}

Interrupt::~Interrupt() {
    callAtNextInterrupt(nullptr);
    s_Waker = nullptr;
}

bool Interrupt::requested() const {
    return s_Requested;
}

void Interrupt::clear() {
    m_Waker.drain();
    s_Requested = false;
    callAtNextInterrupt(request);
}

} // namespace QuillTool
