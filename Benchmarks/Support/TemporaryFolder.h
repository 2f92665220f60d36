// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace Benchmarks {

/// A new folder, removed at the end with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return m_Path; }

private:
    std::filesystem::path m_Path;
};

} // namespace Benchmarks
