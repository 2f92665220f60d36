// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Base {

/// A library that is loaded at run time, from one folder only. It stays loaded, because threads that it started may
/// still run.
class SharedLibrary {
public:
    /// Loads the library with this base name (without the platform's prefix and suffix), if it exists.
    SharedLibrary(const std::string& folder, const std::string& baseName);

    /// The address of an exported name; null if the library or the name is missing.
    void* find(const char* name) const;
    /// Why the library could not be loaded; empty if it was.
    const std::string& failure() const { return m_Failure; }

private:
    void* m_Library = nullptr;
    std::string m_Failure;
};

/// The folder from which this library itself was loaded.
std::string getLibraryFolder();

/// Keeps this library loaded until the process ends, even if it is unloaded. Has no effect once it is being unloaded.
void keepThisLibraryLoaded();

} // namespace Base
