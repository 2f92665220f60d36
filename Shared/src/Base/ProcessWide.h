// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "Base/ForkedChild.h"

namespace Base {

/// State of the process that is made on first use and outlives every static object of the application. A forked child
/// has one of its own, made anew: its parent's knows threads that the child does not have. Kept as a static object, one
/// for each T.
template <typename T>
class ProcessWide {
public:
    ProcessWide() : m_State(new State) {
        s_This = this;
        callInForkedChild([] {
            // What the parent had is kept as it is: nothing of it may run here, destructors included.
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
