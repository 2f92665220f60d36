// SPDX-License-Identifier: Apache-2.0

// AddressSanitizer of clang before 17 leaves its mutexes as they are in a forked child: one that another thread of the
// parent held stays locked for ever. These handlers take all of them over a fork, as later versions do by themselves.

#include <pthread.h>

#if defined(__clang__) && __clang_major__ < 17
#    if __has_feature(address_sanitizer)

// Of the runtime, which is linked statically; compiler-rt/lib/lsan/lsan_common.h and sanitizer_stackdepot.h.
namespace __lsan { // NOLINT(bugprone-reserved-identifier)
void LockThreadRegistry();
void UnlockThreadRegistry();
void LockAllocator();
void UnlockAllocator();
} // namespace __lsan
namespace __sanitizer { // NOLINT(bugprone-reserved-identifier)
void StackDepotLockAll();
void StackDepotUnlockAll();
} // namespace __sanitizer

namespace {

[[maybe_unused]] const int g_HandlersAreSet = [] {
    const auto unlock = [] {
        __sanitizer::StackDepotUnlockAll();
        __lsan::UnlockAllocator();
        __lsan::UnlockThreadRegistry();
    };
    return pthread_atfork(
        [] {
            __lsan::LockThreadRegistry();
            __lsan::LockAllocator();
            __sanitizer::StackDepotLockAll();
        },
        unlock, unlock);
}();

} // namespace

#    endif
#endif
