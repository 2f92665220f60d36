// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <thread>

#include "../Export.h"
#include "Mutex.h"

namespace Utilities {

/// Calls a function at a fixed period, on a thread of its own, until the function answers false or the watchdog is
/// stopped.
///
/// One thread at a time owns a watchdog and calls its operations. Stopping wakes the thread at once and waits for a
/// running call, so that nothing runs any more when stop() returns. The polled function may not start, stop or restart
/// its own watchdog: that throws a KestrelException "WouldWaitForItself"; to end the polling it returns false. An
/// exception that it lets escape is dropped and the polling goes on. A forked child does not have the thread: there
/// stop() and the destructor have nothing to wait for, and start() starts a thread of the child's.
class QUILL_API Watchdog {
public:
    Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    /// Stops.
    virtual ~Watchdog();

    /// Starts polling; the first call comes one period from now. A running watchdog is stopped first.
    /// @param periodMs milliseconds between calls; 0 or less polls without waiting
    /// @param callback the function polled; its answer says whether to go on
    /// @throws std::system_error  no thread can be had
    void start(const int& periodMs, const std::function<bool()>& callback);
    /// Ends the polling and joins the thread; nothing happens on an idle watchdog.
    void stop();
    /// Starts anew with the period and the function of the last start.
    void restart();

private:
    void poll();
    bool runCallback() QUILL_REQUIRES(m_Mutex);
    void end();
    void requestStop();
    bool isOwnThread() const;
    bool isThreadOfThisProcess() const;
    void refuseOwnThread() const;

    Mutex m_Mutex; // guards the command; held while the callback runs
    int m_Period = 0;
    bool m_Running QUILL_GUARDED_BY(m_Mutex) = false;
    int m_Command QUILL_GUARDED_BY(m_Mutex);
    std::thread m_Thread;
    std::function<bool()> m_Callback; // changed only while no thread runs
    std::condition_variable m_Condition;
    int m_Process = 0; // that started the thread; 0 before the first start
};

} // namespace Utilities
