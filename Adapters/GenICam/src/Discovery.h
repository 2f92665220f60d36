// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Cameras/GenICam.h"
#include "FoundCamera.h"
#include "UdpSocket.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// Keeps a list of the cameras that answer, by a thread that asks twice a second. Thread-safe.
class Discovery {
public:
    using Settings = CameraInterface::GenICam::Settings;

    Discovery() = default;
    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;
    ~Discovery() { stop(); }

    /// The cameras that answered last. Waits only for the first answers with these settings: 0.15 s.
    std::vector<FoundCamera> cameras(const Settings& settings) QUILL_EXCLUDES(m_Mutex);
    /// Ends the thread.
    void stop() QUILL_EXCLUDES(m_Mutex);

private:
    using Clock = std::chrono::steady_clock;
    /// By hardware address and serial number, or by the USB library's name.
    using Cameras = std::map<std::string, FoundCamera>;

    /// @return the number of the thread that looks with these settings
    std::uint64_t startThread(const Settings& settings) QUILL_EXCLUDES(m_ControlMutex);
    void stopThread() QUILL_REQUIRES(m_ControlMutex);
    void run(const Settings& settings);
    /// Asks once, and those that were there before several times. An answer to an earlier question counts, too: some
    /// cameras and switches take longer than a round.
    Cameras askNetwork(const UdpSocket& socket, const Settings& settings, const Cameras& before);
    static Cameras askUsb();
    bool waitUntil(Clock::time_point end) QUILL_EXCLUDES(m_Mutex);

    Utilities::Mutex m_ControlMutex; // guards the thread and its settings; held while it is joined
    std::thread m_Thread QUILL_GUARDED_BY(m_ControlMutex);
    Settings m_Settings QUILL_GUARDED_BY(m_ControlMutex);
    std::uint64_t m_Started QUILL_GUARDED_BY(m_ControlMutex) = 0; // threads so far

    Utilities::Mutex m_Mutex; // guards the following members
    std::condition_variable m_Changed;
    bool m_End QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_HasAnswers QUILL_GUARDED_BY(m_Mutex) = false;
    std::uint64_t m_Ended QUILL_GUARDED_BY(m_Mutex) = 0; // the last thread that was ended
    Cameras m_Cameras QUILL_GUARDED_BY(m_Mutex);
    std::uint16_t m_Id = 0; // of the thread
};

} // namespace GenICamAdapter
