// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/CameraAdapters.h"
#include "Cameras/CameraList.h"
#include "Utilities/Mutex.h"
#include "Utilities/Watchdog.h"

namespace CameraInterface {

/// The process-wide state behind the static operations of Camera. Thread-safe.
class CameraWorkspace {
public:
    using NewConnectCallback = std::function<void()>;
    using DisconnectCallback = std::function<void(const std::string&, const std::string&)>;

    /// Created on first use and never destroyed; its threads are stopped at process exit. A forked child has its own.
    static CameraWorkspace& instance();

    CameraList& cameras() { return m_Cameras; }

    /// Starts the watchdogs that do not run yet.
    void startWatchdogs(const std::function<bool()>& searchForNew, const std::function<bool()>& dropVanished);
    /// Stops and destroys both watchdogs and clears both callbacks.
    void stopWatchdogs();

    /// The two registrations: when they return, the former callback no longer runs and is destroyed.
    /// @throws std::system_error  the watchdog's thread cannot be started again; a later startWatchdogs() retries it
    void setNewConnectCallback(NewConnectCallback callback);
    void setDisconnectCallback(DisconnectCallback callback);
    NewConnectCallback newConnectCallback() const;
    DisconnectCallback disconnectCallback() const;

    void setEnumerationFailures(std::map<std::string, std::string> failures);
    std::map<std::string, std::string> enumerationFailures() const;

    /// Keeps what ends the threads of adapters: at process exit, the adapters cannot be asked for any more.
    void rememberAdapters(const std::vector<CameraAdapter>& adapters);
    /// Lets the remembered adapters rest; see CameraAdapter.
    void restAdapters(bool atExit);

private:
    /// Exchanges @p callback and the present one while the watchdog does not run.
    template <typename Callback>
    void exchange(std::unique_ptr<Utilities::Watchdog> CameraWorkspace::*watchdog, Callback CameraWorkspace::*present,
                  Callback& callback);

    CameraList m_Cameras;

    Utilities::Mutex
        m_ControlMutex; // guards the watchdogs; held while they are joined, so never taken on their threads
    std::unique_ptr<Utilities::Watchdog> m_NewConnectWatchdog QUILL_GUARDED_BY(m_ControlMutex);
    std::unique_ptr<Utilities::Watchdog> m_DisconnectWatchdog QUILL_GUARDED_BY(m_ControlMutex);

    mutable Utilities::Mutex m_CallbackMutex; // guards what follows; never held while a callback runs
    NewConnectCallback m_NewConnectCallback QUILL_GUARDED_BY(m_CallbackMutex);
    DisconnectCallback m_DisconnectCallback QUILL_GUARDED_BY(m_CallbackMutex);
    std::map<std::string, std::string> m_EnumerationFailures QUILL_GUARDED_BY(m_CallbackMutex);
    std::vector<std::function<void(bool)>> m_Rests QUILL_GUARDED_BY(m_CallbackMutex);
};

} // namespace CameraInterface
