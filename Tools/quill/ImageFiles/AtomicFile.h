// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ImageFiles/FileAccess.h"

namespace QuillTool {

/// Writes a file atomically: under a temporary name in the same folder, renamed at the end, so that an existing file
/// stays unchanged until then. The new file takes the permissions of the file that it replaces. Writes directly to a
/// pipe or device.
class AtomicFile {
public:
    /// Sequential: write() alone. Random: writeAt() and readAt() alone; what goes to a pipe or device waits in an
    /// unnamed temporary file until commit().
    enum class Access { Sequential, Random };

    /// @throws std::system_error  reason of the operating system
    explicit AtomicFile(const std::string& path, Access access = Access::Sequential);
    /// Writes to standard output, which stays open, as to a pipe.
    /// @throws std::system_error  reason of the operating system
    explicit AtomicFile(Access access);
    /// Writes to an open, empty file of either access, from its beginning.
    /// @param descriptor  closed at the end
    /// @throws std::system_error  reason of the operating system
    explicit AtomicFile(int descriptor);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /// Removes the file unless commit() succeeded.
    ~AtomicFile();

    /// Keeps a failure for commit(): encoders in C call this, and exceptions must not cross them.
    void write(const void* bytes, std::size_t size) noexcept;
    /// Like write().
    /// @return the number of bytes that were written
    std::size_t writeAt(std::uint64_t position, const void* bytes, std::size_t size) noexcept;
    /// @return the number of bytes that were read; fewer than @p size at the end
    std::size_t readAt(std::uint64_t position, void* bytes, std::size_t size) noexcept;
    /// Returns the end of what writeAt() wrote.
    std::uint64_t size() const noexcept { return m_Size; }

    /// @throws std::system_error  an earlier step failed
    void requireNoFailure() const;

    /// Closes and renames the file. Ends writing.
    /// @throws std::system_error  this or an earlier step failed
    void commit();

private:
    void createTemporary();
    void openDirectly(FileHandle file, Access access);
    void sendBuffered();

    std::string m_Path;
    /// Empty if no file needs removal.
    std::string m_Temporary;
    FileHandle m_File;
    /// The pipe or device of Access::Random; then m_File is the temporary file.
    FileHandle m_Receiver;
    std::uint64_t m_Size = 0;
    /// Error number of the first failure.
    int m_Error = 0;
};

} // namespace QuillTool
