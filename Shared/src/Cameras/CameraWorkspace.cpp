#include "Cameras/CameraWorkspace.h"

#include <utility>

#include "Exceptions/Raise.h"
#include "Internal/AtExit.h"
#include "Internal/NeverDestroyed.h"

namespace CameraInterface {

using Utilities::MutexLock;
using Utilities::Watchdog;

namespace {

constexpr int kDisconnectPeriodMs = 500;
constexpr int kNewConnectPeriodMs = 5000;

thread_local bool t_IsWatchdogThread = false;

void start(std::unique_ptr<Watchdog>& watchdog, int periodMs, const std::function<bool()>& callback) {
    if (!watchdog) {
        watchdog = std::make_unique<Watchdog>();
        watchdog->start(periodMs, callback);
    }
}

} // namespace

CameraWorkspace& CameraWorkspace::instance() {
    static Internal::NeverDestroyed<CameraWorkspace> workspace;
    static const Internal::AtExit guard([] {
        // Without unitialisedWorkpace(). An exit from within a callback cannot wait for that callback.
        if (!t_IsWatchdogThread) {
            workspace.get().stopWatchdogs();
            workspace.get().cameras().clear();
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
    const MutexLock lock(m_ControlMutex);
    m_DisconnectWatchdog.reset();
    m_NewConnectWatchdog.reset();
    const MutexLock callbackLock(m_CallbackMutex);
    m_NewConnectCallback = nullptr;
    m_DisconnectCallback = nullptr;
}

void CameraWorkspace::setNewConnectCallback(NewConnectCallback callback) {
    const MutexLock lock(m_ControlMutex);
    if (m_NewConnectWatchdog) {
        m_NewConnectWatchdog->stop();
    }
    {
        const MutexLock callbackLock(m_CallbackMutex);
        m_NewConnectCallback.swap(callback);
    }
    if (m_NewConnectWatchdog) {
        m_NewConnectWatchdog->restart();
    }
}

void CameraWorkspace::setDisconnectCallback(DisconnectCallback callback) {
    const MutexLock lock(m_ControlMutex);
    if (m_DisconnectWatchdog) {
        m_DisconnectWatchdog->stop();
    }
    {
        const MutexLock callbackLock(m_CallbackMutex);
        m_DisconnectCallback.swap(callback);
    }
    if (m_DisconnectWatchdog) {
        m_DisconnectWatchdog->restart();
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

void CameraWorkspace::refuseOnWatchdogThread() {
    if (t_IsWatchdogThread) {
        using namespace KestrelExceptions;
        raise<KestrelException>(QUILL_HERE, Errors::kWouldWaitForItself);
    }
}

CameraWorkspace::WatchdogThread::WatchdogThread() {
    t_IsWatchdogThread = true;
}

CameraWorkspace::WatchdogThread::~WatchdogThread() {
    t_IsWatchdogThread = false;
}

} // namespace CameraInterface
