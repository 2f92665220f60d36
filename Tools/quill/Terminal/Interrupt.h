// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Terminal/Waker.h"

namespace QuillTool {

/// Turns the first SIGINT or SIGTERM, or Ctrl-C or the closing of a console, into a request to end. Waits end at once,
/// other work when it completes. A second one ends the process immediately. At most one object exists at a time.
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    bool requested() const;
    /// Is awake from the request on.
    const Waker& waker() const { return m_Waker; }
    /// Discards the request and accepts another.
    void clear();

private:
    Waker m_Waker;
};

} // namespace QuillTool
