// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace QuillTool {

/// An unnamed file in memory.
class MemoryFile {
public:
    /// @throws std::system_error  reason of the operating system
    MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();

    /// Returns another descriptor of the file, which belongs to the caller.
    /// @throws std::system_error  reason of the operating system
    int duplicate() const;
    /// @throws std::system_error  reason of the operating system
    std::string content() const;

private:
    int m_Descriptor;
};

} // namespace QuillTool
