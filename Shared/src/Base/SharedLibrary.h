// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Base {

/// A library that is loaded at run time, from one folder and nowhere else. It stays loaded: what it started may still
/// run.
class SharedLibrary {
public:
    /// Loads the library of this base name (without the platform's prefix and suffix), or finds that there is none.
    SharedLibrary(const std::string& folder, const std::string& baseName);

    /// The address of an exported name; null where the library, or the name, is missing.
    void* find(const char* name) const;

private:
    void* m_Library = nullptr;
};

/// The folder that this library itself was loaded from.
std::string getLibraryFolder();

/// From now on this library stays loaded until the process ends, whoever unloads it. Without effect once it is being
/// unloaded.
void keepThisLibraryLoaded();

} // namespace Base
