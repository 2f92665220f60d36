#include "Streams/FrameHandover.h"

#include <utility>

namespace OrvexAdapter {

using Utilities::MutexLock;

void FrameHandover::open() {
    const MutexLock lock(m_Mutex);
    m_Open = true;
    m_Ready = false;
    m_Requested = false;
}

void FrameHandover::close(Outcome why) {
    {
        const MutexLock lock(m_Mutex);
        if (!m_Open) {
            return; // the first reason counts
        }
        m_Open = false;
        m_Why = why;
        m_Requested = false;
    }
    m_Condition.notify_all();
}

void FrameHandover::deliver(std::vector<unsigned char>&& frame) {
    {
        const MutexLock lock(m_Mutex);
        if (!m_Requested) {
            return;
        }
        m_Requested = false;
        m_ImageData = std::move(frame);
        m_Ready = true;
    }
    m_Condition.notify_all();
}

FrameHandover::Outcome FrameHandover::take(std::chrono::steady_clock::time_point deadline,
                                           std::vector<unsigned char>& frame) {
    MutexLock lock(m_Mutex);
    m_Requested = true;
    m_Ready = false;
    lock.waitUntil(m_Condition, deadline, [this]() QUILL_REQUIRES(m_Mutex) { return m_Ready || !m_Open; });
    if (m_Ready) {
        m_Ready = false;
        frame = std::move(m_ImageData);
        return Outcome::Frame;
    }
    m_Requested = false;
    return m_Open ? Outcome::TimedOut : m_Why;
}

} // namespace OrvexAdapter
