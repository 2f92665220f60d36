// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Terminal/WakePipe.h"

namespace QuillTool {

/// Turns the first SIGINT or SIGTERM into a request to end. Waits end at once, other work when it completes. A second
/// signal ends the process immediately. At most one object exists at a time.
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    bool requested() const;
    /// Is readable from the request on.
    int descriptor() const { return m_Pipe.descriptor(); }
    /// Discards the request and accepts another.
    void clear();
    /// Waits until @p descriptor is readable.
    /// @return false after an interrupt
    bool waitReadable(int descriptor) const;

private:
    WakePipe m_Pipe;
};

} // namespace QuillTool
