// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "DriverKit/RegistryApi.h"

namespace Utilities {

// The three operations of the registry over a file of lines "PATH\NAME=TEXT" in UTF-8, which is read whenever a key is
// opened. PATH is that of the key below HKEY_LOCAL_MACHINE; paths and names are compared case-sensitively, and 32-bit
// and 64-bit views are the same. An empty NAME makes a key without values. A TEXT that begins with "dword:" is a
// number, which a query for texts does not return. Blanks around the three, and lines that begin with "#" or have no
// "=", are ignored; of several lines with the same name, the last counts. A TEXT that is not UTF-8 is returned as
// invalid UTF-16. Thread-safe.

/// Opens a key of the local machine. A missing file has no keys; a file that cannot be read, is not a regular file or
/// is larger than 1 MiB denies access.
win32::LSTATUS openStoredKey(const std::string& file, const char16_t* path, RegistryHandle* opened);
/// Reads a value of the key itself; the path is ignored.
win32::LSTATUS getStoredValue(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                              std::uint32_t* type, void* data, std::uint32_t* size);
win32::LSTATUS closeStoredKey(RegistryHandle key);

} // namespace Utilities
