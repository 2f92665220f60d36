// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <thread>

#include "../Export.h"
#include "Mutex.h"

namespace Utilities {

/// Calls a function periodically, on a thread of its own, until the function returns false or the watchdog is stopped.
///
/// One thread at a time uses a watchdog. Stopping wakes the thread at once and waits for a running call: when stop()
/// returns, the function no longer runs. The polled function must not start, stop or restart its own watchdog, which
/// throws a KestrelException "WouldWaitForItself". To stop polling, return false. An exception of the function is
/// ignored, and polling continues. A forked child does not have the thread: stop() and the destructor have nothing to
/// wait for, and start() starts a thread in the child.
class QUILL_API Watchdog {
public:
    Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    /// Calls stop().
    virtual ~Watchdog();

    /// Starts polling; the first call comes one period from now. Stops a running watchdog first.
    /// @param periodMs milliseconds between calls; 0 or less polls without waiting
    /// @param callback the polled function; returns whether to continue
    /// @throws std::system_error  the thread cannot be started
    void start(const int& periodMs, const std::function<bool()>& callback);
    /// Stops polling and joins the thread. Does nothing if the watchdog is idle.
    void stop();
    /// Starts again with the period and the function of the last start.
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
    int m_Process = 0; // the process that started the thread; 0 before the first start
};

} // namespace Utilities
