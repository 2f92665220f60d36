// SPDX-License-Identifier: Apache-2.0

#include "Utilities/FrameCounter.h"

#include "Base/SteadyClock.h"

namespace Utilities {

namespace {

/// Times are discarded when the rate is read; this limits their number on a stream whose rate is never read.
constexpr std::size_t kMaximumFrameTimes = 65'536;

} // namespace

FrameCounter::~FrameCounter() = default;

void FrameCounter::incrementFrameCount() {
    ++m_FrameCount;
    const MutexLock lock(m_Mutex);
    if (m_FrameTimes.size() >= kMaximumFrameTimes) {
        m_FrameTimes.pop_front();
    }
    m_FrameTimes.push_back(Base::steadySeconds());
}

double FrameCounter::getFramesPerSecond() {
    const double now = Base::steadySeconds();
    const MutexLock lock(m_Mutex);
    dropOldFrames(now);
    if (m_FrameTimes.empty()) {
        m_FramesPerSecond = 0;
    } else if (const double span = now - m_FrameTimes.front(); span > 0) {
        m_FramesPerSecond = static_cast<double>(m_FrameTimes.size()) / span;
    }
    return m_FramesPerSecond;
}

unsigned long long FrameCounter::getFrameCount() const {
    return m_FrameCount;
}

void FrameCounter::resetFrameCount() {
    const MutexLock lock(m_Mutex);
    m_FrameTimes.clear();
}

void FrameCounter::setDesiredIntervalTime(double seconds) {
    m_DesiredIntervalTime = seconds;
}

double FrameCounter::getDesiredIntervalTime() {
    return m_DesiredIntervalTime;
}

void FrameCounter::dropOldFrames(double now) {
    const double interval = m_DesiredIntervalTime;
    while (!m_FrameTimes.empty() && !(interval > now - m_FrameTimes.front())) {
        m_FrameTimes.pop_front();
    }
}

} // namespace Utilities
