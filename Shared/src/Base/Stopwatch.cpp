// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Stopwatch.h"

#include "Base/SteadyClock.h"

namespace Utilities {

void Stopwatch::start() {
    const double now = Base::steadySeconds();
    if (m_Running) {
        closeInterval(Base::steadySeconds());
    }
    if (m_FirstStart) {
        m_OriginTime = now;
        m_FirstStart = false;
    }
    m_LastTime = now;
    m_Running = true;
}

void Stopwatch::stop() {
    closeInterval(Base::steadySeconds());
    m_Running = false;
}

void Stopwatch::reset() {
    m_Elapsed = 0;
    m_Delta = 0;
    m_Running = false;
    m_FirstStart = true;
}

double Stopwatch::delta() {
    return m_Running ? Base::steadySeconds() - m_LastTime : m_Delta;
}

double Stopwatch::elapsed() {
    return m_Running ? Base::steadySeconds() - m_OriginTime : m_Elapsed;
}

void Stopwatch::closeInterval(double now) {
    m_Delta = now - m_LastTime;
    m_Elapsed += m_Delta;
}

} // namespace Utilities
