// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CameraWorkspace.h"

#include <utility>

#include "Base/AtExit.h"
#include "Base/ProcessWide.h"
#include "Cameras/CallbackThread.h"

namespace CameraInterface {

using Utilities::MutexLock;
using Utilities::Watchdog;

namespace {

constexpr int kDisconnectPeriodMs = 500;
constexpr int kNewConnectPeriodMs = 5000;

void start(std::unique_ptr<Watchdog>& watchdog, int periodMs, const std::function<bool()>& callback) {
    if (!watchdog) {
        auto started = std::make_unique<Watchdog>();
        started->start(periodMs, callback);
        watchdog = std::move(started);
    }
}

} // namespace

CameraWorkspace& CameraWorkspace::instance() {
    static Base::ProcessWide<CameraWorkspace> workspace;
    static const Base::AtExit guard([] {
        // The process exits without unitialisedWorkpace(). An exit from within a callback cannot wait for that
        // callback.
        if (!CallbackThread::isHere()) {
            workspace.get().stopWatchdogs();
            workspace.get().cameras().clear();
            workspace.get().restAdapters(true);
        }
    });
    return workspace.get();
}

void CameraWorkspace::startWatchdogs(const std::function<bool()>& searchForNew,
                                     const std::function<bool()>& dropVanished) {
    const MutexLock lock(m_ControlMutex);
    start(m_DisconnectWatchdog, kDisconnectPeriodMs, dropVanished);
    start(m_NewConnectWatchdog, kNewConnectPeriodMs, searchForNew);
}

void CameraWorkspace::stopWatchdogs() {
    // Destroyed after the locks are released: objects that a callback owns may call back here.
    NewConnectCallback newConnectCallback;
    DisconnectCallback disconnectCallback;
    const MutexLock lock(m_ControlMutex);
    m_DisconnectWatchdog.reset();
    m_NewConnectWatchdog.reset();
    const MutexLock callbackLock(m_CallbackMutex);
    newConnectCallback.swap(m_NewConnectCallback);
    disconnectCallback.swap(m_DisconnectCallback);
}

void CameraWorkspace::setNewConnectCallback(NewConnectCallback callback) {
    exchange(&CameraWorkspace::m_NewConnectWatchdog, &CameraWorkspace::m_NewConnectCallback, callback);
}

void CameraWorkspace::setDisconnectCallback(DisconnectCallback callback) {
    exchange(&CameraWorkspace::m_DisconnectWatchdog, &CameraWorkspace::m_DisconnectCallback, callback);
}

template <typename Callback>
void CameraWorkspace::exchange(std::unique_ptr<Watchdog> CameraWorkspace::*watchdog, Callback CameraWorkspace::*present,
                               Callback& callback) {
    const MutexLock lock(m_ControlMutex);
    std::unique_ptr<Watchdog> stopped = std::move(this->*watchdog); // dropped if it cannot be started again
    if (stopped) {
        stopped->stop();
    }
    {
        const MutexLock callbackLock(m_CallbackMutex);
        (this->*present).swap(callback);
    }
    if (stopped) {
        stopped->restart();
        this->*watchdog = std::move(stopped);
    }
}

CameraWorkspace::NewConnectCallback CameraWorkspace::newConnectCallback() const {
    const MutexLock lock(m_CallbackMutex);
    return m_NewConnectCallback;
}

CameraWorkspace::DisconnectCallback CameraWorkspace::disconnectCallback() const {
    const MutexLock lock(m_CallbackMutex);
    return m_DisconnectCallback;
}

void CameraWorkspace::setEnumerationFailures(std::map<std::string, std::string> failures) {
    const MutexLock lock(m_CallbackMutex);
    m_EnumerationFailures.swap(failures);
}

std::map<std::string, std::string> CameraWorkspace::enumerationFailures() const {
    const MutexLock lock(m_CallbackMutex);
    return m_EnumerationFailures;
}

void CameraWorkspace::rememberAdapters(const std::vector<CameraAdapter>& adapters) {
    const MutexLock lock(m_CallbackMutex);
    if (!m_Rests.empty()) {
        return;
    }
    for (const CameraAdapter& adapter : adapters) {
        if (adapter.rest) {
            m_Rests.push_back(adapter.rest);
        }
    }
}

void CameraWorkspace::restAdapters(bool atExit) {
    std::vector<std::function<void(bool)>> rests;
    {
        const MutexLock lock(m_CallbackMutex);
        rests = m_Rests;
    }
    for (const auto& rest : rests) {
        rest(atExit);
    }
}

} // namespace CameraInterface
