// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "../Export.h"

namespace Utilities {

/// Measures intervals on the steady clock and adds them up; all times are in seconds. Reentrant.
class QUILL_API Stopwatch {
public:
    /// Opens an interval. If the watch runs, closes the open interval first, as a lap.
    void start();
    /// Closes the interval. A further call adds the time since the last start once more.
    void stop();
    /// Restores the state of a new watch.
    void reset();
    /// Returns the open interval so far, or the last closed one.
    double delta();
    /// Returns the time since the first start, including pauses, while running; otherwise the sum of the closed
    /// intervals.
    double elapsed();

private:
    void closeInterval(double now);

    double m_Elapsed = 0;
    double m_Delta = 0;
    bool m_Running = false;
    double m_OriginTime = 0;
    double m_LastTime = 0;
    bool m_FirstStart = true;
};

} // namespace Utilities
