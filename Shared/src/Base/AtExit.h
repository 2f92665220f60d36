// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "Process/Process.h"

namespace Base {

/// Calls a function that ends threads when the process exits or the library is unloaded, unless the system has ended
/// the threads already. Kept as a static object.
template <typename Action>
class AtExit {
public:
    explicit AtExit(Action action) : m_Action(std::move(action)) { Process::keepThisLibraryWithItsThreads(); }
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;
    ~AtExit() { // NOLINT(bugprone-exception-escape): a failing mutex leaves nothing but to end
        if (Process::hasOtherThreads()) {
            m_Action();
        }
    }

private:
    Action m_Action;
};

} // namespace Base
