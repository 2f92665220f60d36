// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>

namespace Base {

/// Calls a function in every child that this process forks from now on, before fork() returns in the child. The child
/// has one thread; mutexes that other threads held stay locked for ever.
void callInForkedChild(void (*function)());

/// The ID of this process.
int processNumber();

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
        callInForkedChild([] { renewInForkedChild(object); });
        return true;
    }();
    static_cast<void>(isRegistered);
}

} // namespace Base
