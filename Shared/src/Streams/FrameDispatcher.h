// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "Streams/FrameQueue.h"

namespace CameraInterface {

/// Passes every frame of a queue to a function, on a thread of its own. The destructor waits for a running call, except
/// on that thread itself: then the process is exiting. Exceptions of the function are dropped.
class FrameDispatcher {
public:
    using Callback = std::function<void(const Frame&)>;

    /// @throws std::system_error  the thread cannot be started
    FrameDispatcher(FrameQueue queue, Callback callback);
    FrameDispatcher(const FrameDispatcher&) = delete;
    FrameDispatcher& operator=(const FrameDispatcher&) = delete;
    ~FrameDispatcher();

    /// @throws KestrelException "WouldWaitForItself"  the calling thread is a dispatcher's
    static void refuseOnItsThread();

private:
    struct Work;

    static void run(Work& work);

    const std::shared_ptr<Work> m_Work;
    const int m_Process;
    std::thread m_Thread;
};

} // namespace CameraInterface
