// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace TestSupport {

/// What is done once standard output holds a text.
struct Reaction {
    std::string text;
    std::function<void(pid_t process)> action;
};

/// A program to run and what surrounds it.
struct ChildProcess {
    std::string program; ///< looked for in PATH unless it has a slash
    std::vector<std::string> arguments;
    std::vector<std::string> environment; ///< NAME=VALUE, on top of this process's own
    std::string inputFile = "/dev/null";
    bool onTerminal = false;           ///< standard output is a terminal rather than a pipe
    std::vector<Reaction> reactions{}; ///< each waits for the one before it
};

struct ChildResult {
    int exitCode = -1; ///< minus the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Whether a child can have a terminal: there are none where /dev/pts is not mounted.
bool canOpenTerminal();

/// Runs a program to its end. One that takes longer than a minute is killed.
ChildResult runChild(const ChildProcess& child);

} // namespace TestSupport
