// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Base {

/// A library that is loaded at run time, from one folder only. It stays loaded, because threads that it started may
/// still run.
class SharedLibrary {
public:
    /// Loads the library with this base name (without the platform's prefix and suffix), if it exists.
    /// @param folder in UTF-8
    SharedLibrary(const std::string& folder, const std::string& baseName);

    /// The address of an exported name; null if the library or the name is missing.
    void* find(const char* name) const;
    /// The address of an export that has only a number on systems with export numbers, and elsewhere the name
    /// "PREFIX_NUMBER"; null if the library or the export is missing.
    void* find(const char* prefix, unsigned number) const;
    /// Why the library could not be loaded; empty if it was.
    const std::string& failure() const { return m_Failure; }

private:
    void* m_Library = nullptr;
    std::string m_Failure;
};

/// The folder from which this library itself was loaded, in UTF-8.
std::string getLibraryFolder();

} // namespace Base
