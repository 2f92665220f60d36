// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Watchdog.h"

#include <chrono>

#include "Base/ForkedChild.h"
#include "Exceptions/Raise.h"

namespace Utilities {

namespace {

constexpr int kNoCommand = -1;
constexpr int kStopCommand = 3;

} // namespace

Watchdog::Watchdog() : m_Command(kNoCommand) {}

Watchdog::~Watchdog() {
    if (isOwnThread()) {
        // The process exits from within the callback: the thread does not run again.
        m_Thread.detach();
    } else {
        end();
    }
}

void Watchdog::start(const int& periodMs, const std::function<bool()>& callback) {
    // Copies, because restart() passes the members that are assigned below.
    const int period = periodMs;
    const std::function<bool()> function = callback;
    stop();
    m_Period = period;
    m_Callback = function;
    const MutexLock lock(m_Mutex);
    m_Command = kNoCommand;
    m_Process = Process::number();
    m_Thread = std::thread(&Watchdog::poll, this);
}

void Watchdog::stop() {
    refuseOwnThread();
    end();
}

void Watchdog::restart() {
    start(m_Period, m_Callback);
}

void Watchdog::end() {
    if (!m_Thread.joinable()) {
        return;
    }
    if (!isThreadOfThisProcess()) {
        Base::renewInForkedChild(m_Thread);
        Base::renewInForkedChild(m_Mutex);
        Base::renewInForkedChild(m_Condition);
        return;
    }
    requestStop();
    m_Thread.join();
}

void Watchdog::requestStop() {
    {
        const MutexLock lock(m_Mutex);
        m_Command = kStopCommand;
    }
    m_Condition.notify_all();
}

void Watchdog::poll() {
    MutexLock lock(m_Mutex);
    m_Running = true;
    while (m_Running) {
        const auto commanded = [this]() QUILL_REQUIRES(m_Mutex) { return m_Command != kNoCommand; };
        if (!lock.waitFor(m_Condition, std::chrono::milliseconds(m_Period), commanded)) {
            m_Running = runCallback();
        }
        if (m_Command == kStopCommand) {
            m_Running = false;
        }
    }
}

bool Watchdog::runCallback() {
    try {
        return !m_Callback || m_Callback();
    } catch (...) {
        return true;
    }
}

bool Watchdog::isOwnThread() const {
    return isThreadOfThisProcess() && m_Thread.get_id() == std::this_thread::get_id();
}

bool Watchdog::isThreadOfThisProcess() const {
    return m_Process == Process::number();
}

void Watchdog::refuseOwnThread() const {
    if (isOwnThread()) {
        using namespace KestrelExceptions;
        raise<KestrelException>(QUILL_HERE, Errors::kWouldWaitForItself);
    }
}

} // namespace Utilities
