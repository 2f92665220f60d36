// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace QuillTool {

/// Writes a file atomically: under a temporary name in the same folder, renamed at the end, so that an existing file
/// stays unchanged until then. The new file takes the permissions of the file that it replaces. Writes directly to a
/// pipe or device.
class AtomicFile {
public:
    /// @throws std::system_error  reason of the operating system
    explicit AtomicFile(const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /// Removes the file unless commit() succeeded.
    ~AtomicFile();

    /// Keeps a failure for commit(): encoders in C call this, and exceptions must not cross them.
    void write(const void* bytes, std::size_t size) noexcept;

    /// Closes and renames the file. Ends writing.
    /// @throws std::system_error  this or an earlier step failed
    void commit();

private:
    void createTemporary();

    std::string m_Path;
    /// Empty if no file needs removal.
    std::string m_Temporary;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_File;
    /// Error number of the first failure.
    int m_Error = 0;
};

} // namespace QuillTool
