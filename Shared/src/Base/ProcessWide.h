// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "Process/Process.h"

namespace Base {

/// Process-wide state that is created on first use and outlives every static object of the application. A forked child
/// gets a new state of its own, since its parent's refers to threads that the child does not have. Kept as a static
/// object, one for each T.
template <typename T>
class ProcessWide {
public:
    ProcessWide() : m_State(new State) {
        s_This = this;
        Process::callInForkedChild([] {
            // The parent's state is left as it is: none of its code may run here, including destructors.
            auto state = std::make_unique<State>();
            state->parents = s_This->m_State;
            s_This->m_State = state.release();
        });
    }
    ProcessWide(const ProcessWide&) = delete;
    ProcessWide& operator=(const ProcessWide&) = delete;

    T& get() { return m_State->own; }

private:
    struct State {
        T own;
        State* parents = nullptr;
    };

    inline static ProcessWide* s_This = nullptr;
    State* m_State; // never deleted
};

} // namespace Base
