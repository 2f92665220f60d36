// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace Base {

/// Calls a function when the process exits or the library is unloaded. Kept as a static object.
template <typename Action>
class AtExit {
public:
    explicit AtExit(Action action) : m_Action(std::move(action)) {}
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;
    ~AtExit() { m_Action(); } // NOLINT(bugprone-exception-escape): a failing mutex leaves nothing but to end

private:
    Action m_Action;
};

} // namespace Base
