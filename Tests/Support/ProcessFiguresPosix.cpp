// SPDX-License-Identifier: Apache-2.0

#include "Support/ProcessFigures.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <malloc.h>
#include <unistd.h>

namespace TestSupport {

namespace {

std::size_t entriesOf(const char* folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

} // namespace

std::size_t residentBytes() {
    std::size_t size = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t threadsOfProcess() {
    return entriesOf("/proc/self/task");
}

std::size_t openDescriptors() {
    return entriesOf("/proc/self/fd") - 1; // without that of the folder itself
}

std::size_t allocatedBytes() {
    return mallinfo2().uordblks;
}

} // namespace TestSupport
