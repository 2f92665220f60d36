// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <string>
#include <thread>

#include <Quill.h>

#include "Serve/Cameras/CameraService.h"
#include "Serve/Cameras/KnownCamera.h"

namespace QuillTool::Serve {

/// Reports what happens to cameras by itself: arrivals and departures as the library reports them; each second, while
/// somebody listens, properties that have changed and the statistics of streams. One object at a time, made and
/// destroyed while the library's workspace is open.
class Observer {
public:
    Observer(KnownCameras& known, Sink sink);
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    ~Observer();

    void setListening(bool anybody);
    /// Looks at all cameras now rather than at the end of the second.
    void lookNow();

private:
    /// The library's callbacks, which end before what they use.
    class Registrations {
    public:
        explicit Registrations(Observer& observer);
        Registrations(const Registrations&) = delete;
        Registrations& operator=(const Registrations&) = delete;
        ~Registrations();
    };

    /// The properties of a camera as they were last reported, by name.
    using Told = std::map<std::string, Json>;

    void tellArrivals();
    void tellDeparture(const std::string& modelName, const std::string& serialNumber);
    void run();
    bool waitForTurn();
    void look(const std::shared_ptr<KnownCamera>& camera);
    void tellProperties(KnownCamera& camera);

    KnownCameras& m_Known;
    const Sink m_Sink;
    Utilities::Mutex m_Mutex; // guards the following, up to the models
    std::condition_variable m_Changed;
    bool m_IsListening QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_IsDue QUILL_GUARDED_BY(m_Mutex) = false; // to look at once
    bool m_IsEnding QUILL_GUARDED_BY(m_Mutex) = false;
    std::map<std::string, std::string> m_Present QUILL_GUARDED_BY(m_Mutex); // models by serial number
    std::map<std::string, Told> m_Told;                                     // of the thread alone
    const Registrations m_Registrations;
    std::thread m_Thread;
};

} // namespace QuillTool::Serve
