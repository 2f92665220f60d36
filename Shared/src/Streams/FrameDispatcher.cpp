// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameDispatcher.h"

#include <utility>

#include "Base/ForkedChild.h"
#include "Cameras/CallbackThread.h"
#include "Exceptions/Raise.h"

namespace CameraInterface {

namespace {

thread_local bool t_IsFrameThread = false;

} // namespace

struct FrameDispatcher::Work {
    FrameQueue queue;
    Callback callback;
};

FrameDispatcher::FrameDispatcher(FrameQueue queue, Callback callback)
    : m_Work(std::make_shared<Work>(Work{std::move(queue), std::move(callback)})), m_Process(Process::number()),
      m_Thread([work = m_Work] { run(*work); }) {}

FrameDispatcher::~FrameDispatcher() {
    if (m_Process != Process::number()) {
        Base::renewInForkedChild(m_Thread);
        return;
    }
    m_Work->queue.close();
    if (m_Thread.get_id() == std::this_thread::get_id()) {
        m_Thread.detach();
    } else {
        m_Thread.join();
    }
}

void FrameDispatcher::refuseOnItsThread() {
    if (t_IsFrameThread) {
        using namespace KestrelExceptions;
        raise<KestrelException>(QUILL_HERE, Errors::kWouldWaitForItself);
    }
}

void FrameDispatcher::run(Work& work) {
    const CallbackThread mark;
    t_IsFrameThread = true;
    while (work.queue.waitForRun() == FrameQueueStatus::Frame) {
        for (const Frame& frame : work.queue) {
            try {
                work.callback(frame);
            } catch (...) {
                // It must not end the thread.
            }
        }
    }
}

} // namespace CameraInterface
