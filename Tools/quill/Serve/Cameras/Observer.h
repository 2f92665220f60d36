// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <optional>
#include <string>
#include <thread>

#include <Quill.h>

#include "Serve/Cameras/CameraService.h"
#include "Serve/Cameras/KnownCamera.h"

namespace QuillTool::Serve {

/// Reports what happens to cameras by itself: arrivals and departures as the library reports them; each second, while
/// somebody listens, properties that have changed and the statistics of streams, on a thread for each camera, so that a
/// slow one holds up no other. One object at a time, made and destroyed while the library's workspace is open.
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

    /// The properties of a camera as they were last reported, by name; none until they are known.
    using Told = std::optional<std::map<std::string, Json>>;

    void tellArrivals();
    void tellDeparture(const std::string& modelName, const std::string& serialNumber);
    void startWatching();
    void watch(KnownCamera& camera);
    /// Waits for the end of the second, or for a look at once of which the caller does not know.
    /// @return false if the observer ends
    bool waitForTurn(unsigned& knownLook);
    bool isListening();
    void look(KnownCamera& camera, Told& told);
    void tellProperties(KnownCamera& camera, Told& told);

    KnownCameras& m_Known;
    const Sink m_Sink;
    Utilities::Mutex m_Mutex; // guards the following, up to the models
    std::condition_variable m_Changed;
    bool m_IsListening QUILL_GUARDED_BY(m_Mutex) = false;
    unsigned m_Looks QUILL_GUARDED_BY(m_Mutex) = 0; // looks at once, so far
    bool m_IsEnding QUILL_GUARDED_BY(m_Mutex) = false;
    std::map<std::string, std::string> m_Present QUILL_GUARDED_BY(m_Mutex); // models by serial number
    const Registrations m_Registrations;
    std::map<std::string, std::thread> m_Watches; // by serial number; of m_Starter alone
    std::thread m_Starter;
};

} // namespace QuillTool::Serve
