// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>

namespace Base {

/// Calls a function in every child that this process forks from now on, before fork() returns there. The child has one
/// thread; whatever mutex another one held is held for ever.
void callInForkedChild(void (*function)());

/// The number of this process.
int processNumber();

/// Makes an object anew over one that the parent's threads may have been using, which is not destroyed: its mutexes may
/// be held, and the place of its threads may be that of the child's own by now.
template <typename T>
void renewInForkedChild(T& object) {
    ::new (static_cast<void*>(&object)) T;
}

/// Does that with a static object in every child that is forked from now on.
template <auto& object>
void renewInEveryForkedChild() {
    static const bool isRegistered = [] {
        callInForkedChild([] { renewInForkedChild(object); });
        return true;
    }();
    static_cast<void>(isRegistered);
}

} // namespace Base
