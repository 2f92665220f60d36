// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The process, and the shared library in it that this code is part of. Each library has its own copy.
namespace Process {

/// The ID of this process.
int number();

/// A variable of the environment; null if it is not set, or not to be trusted since the program has more rights than
/// its caller.
const char* environmentVariable(const char* name);

/// Calls a function in every child that this process forks from now on, before fork() returns in the child. The child
/// has one thread; mutexes that other threads held stay locked for ever. Has no effect where processes do not fork.
/// @throws std::system_error  there is not enough memory
void callInForkedChild(void (*function)());

/// Keeps this library loaded until the process ends, even if it is unloaded. Has no effect once it is being unloaded.
void keepThisLibraryLoaded();

/// Keeps this library loaded where the linker cannot, or where it could not end its threads while it is unloaded.
void keepThisLibraryWithItsThreads();

/// Whether the other threads of the process still run. Some systems end them before they destroy the static objects of
/// libraries, which must not wait for them then.
bool hasOtherThreads();

} // namespace Process
