// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace QuillTool {

/// An output file that appears whole or not at all: written under another name in the same folder and renamed at the
/// end, so that a file of that name stays as it was until then. A file that is replaced hands on its permissions.
/// A pipe or device is written straight to.
class AtomicFile {
public:
    /// @throws std::system_error  the operating system's reason
    explicit AtomicFile(const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /// Without commit(), leaves nothing behind.
    ~AtomicFile();

    /// A failure is remembered for commit(): encoders written in C, which no exception may cross, call this.
    void write(const void* bytes, std::size_t size) noexcept;

    /// Ends the file and gives it its name. Nothing is written afterwards.
    /// @throws std::system_error  this or an earlier step failed
    void commit();

private:
    void createTemporary();

    std::string m_Path;
    /// Empty: nothing to remove.
    std::string m_Temporary;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_File;
    /// The first failure's error number.
    int m_Error = 0;
};

} // namespace QuillTool
