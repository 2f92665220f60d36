// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Terminal/WakePipe.h"

namespace QuillTool {

/// Turns the first SIGINT or SIGTERM into a request to end, which waits notice at once and everything else when it is
/// done. A second one ends the process on the spot. One object at a time.
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    bool requested() const;
    /// Readable from the request on.
    int descriptor() const { return m_Pipe.descriptor(); }
    /// Forgets the request and waits for another.
    void clear();
    /// Waits until @p descriptor can be read.
    /// @return false if an interrupt was requested
    bool waitReadable(int descriptor) const;

private:
    WakePipe m_Pipe;
};

} // namespace QuillTool
