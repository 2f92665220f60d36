// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>

#include "Process/Process.h"

namespace Base {

/// Constructs an object over one that the parent's threads may have been using. The old object is not destroyed: its
/// mutexes may be locked, and its thread IDs may belong to threads of the child by now.
template <typename T>
void renewInForkedChild(T& object) {
    ::new (static_cast<void*>(&object)) T;
}

/// Does that to a static object in every child that is forked from now on.
template <auto& object>
void renewInEveryForkedChild() {
    static const bool isRegistered = [] {
        Process::callInForkedChild([] { renewInForkedChild(object); });
        return true;
    }();
    static_cast<void>(isRegistered);
}

} // namespace Base
