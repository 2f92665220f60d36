// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace TestSupport {

/// An action to take once standard output contains a text.
struct Reaction {
    std::string text;
    std::function<void(pid_t process)> action;
};

/// A program to run, with its environment.
struct ChildProcess {
    std::string program; ///< searched in PATH unless it contains a slash
    std::vector<std::string> arguments;
    std::vector<std::string> environment; ///< NAME=VALUE, in addition to that of this process
    std::string inputFile = "/dev/null";
    bool onTerminal = false;           ///< standard output is a terminal rather than a pipe
    std::vector<Reaction> reactions{}; ///< each waits for the previous one
};

struct ChildResult {
    int exitCode = -1; ///< minus the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Whether a child can have a terminal: there are none if /dev/pts is not mounted.
bool canOpenTerminal();

/// Runs a program to its end. One that takes longer than a minute is killed.
ChildResult runChild(const ChildProcess& child);

} // namespace TestSupport
