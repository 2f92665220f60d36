// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace TestSupport {

/// A temporary folder, removed by the destructor.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    std::filesystem::path path() const { return m_Path; }
    /// The path of a file, in UTF-8.
    std::string file(const std::string& name) const { return (m_Path / std::filesystem::u8path(name)).u8string(); }
    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path m_Path;
};

/// The bytes of a file.
std::string readFile(const std::filesystem::path& path);

} // namespace TestSupport
