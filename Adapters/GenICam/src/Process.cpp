// SPDX-License-Identifier: Apache-2.0

#include "Process.h"

#include <unistd.h>

#include <atomic>

namespace GenICamAdapter {

namespace {

struct ProcessOfPid {
    pid_t pid;
    Process process;
    ProcessOfPid* parents; // left as it is: its threads are not here, and its mutexes may be locked
};

std::atomic<ProcessOfPid*> processOfPid{nullptr};

} // namespace

Process& Process::instance() {
    ProcessOfPid* present = processOfPid;
    while (present == nullptr || present->pid != getpid()) {
        auto* const made = new ProcessOfPid{getpid(), {}, present};
        if (processOfPid.compare_exchange_strong(present, made)) {
            return made->process;
        }
        delete made; // another thread was faster
    }
    return present->process;
}

} // namespace GenICamAdapter
