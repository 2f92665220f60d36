// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "SoftwareDevices.h"

namespace SoftwareDevices {

enum class FrameKind { Video, Still };

/// The functions that are called for each frame of one open handle. Thread-safe.
class FrameCallbacks {
public:
    /// @return an id that is never reused
    std::int32_t add(FrameKind kind, ORVEX_FRAME_CALLBACK callback, void* context);

    /// When it returns, the callback neither runs nor will run, except a callback that removes itself, which is still
    /// running.
    /// @return false if it is not registered
    bool remove(FrameKind kind, std::int32_t id);

    /// Called only on the device thread of the handle.
    void run(FrameKind kind);

private:
    struct Registration {
        std::int32_t id;
        FrameKind kind;
        ORVEX_FRAME_CALLBACK callback;
        void* context;
    };
    static constexpr std::int32_t kNone = -1;

    std::vector<Registration>::iterator findLocked(FrameKind kind, std::int32_t id);

    std::mutex m_Mutex; // guards the following members; not held while a callback runs
    std::condition_variable m_Returned;
    std::vector<Registration> m_Registrations;
    std::int32_t m_NextId = 1;
    std::int32_t m_RunningId = kNone;
    std::thread::id m_RunningThread;
};

} // namespace SoftwareDevices
