// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "DriverKit/RegistryApi.h"

namespace Utilities {

// The three operations of the registry over a file of lines "PATH\NAME=TEXT" in UTF-8, which is read whenever a key is
// opened. The path is that of the key below HKEY_LOCAL_MACHINE; paths and names are compared as they are written, and
// there is one view of them. An empty name makes a key without values. A text that begins with "dword:" stands for a
// number, which no query for texts gives. Blanks around path, name and text do not count, nor do lines that begin with
// "#" or have no "=". The last line of a name holds. A text that is no UTF-8 is handed out as one that is no UTF-16.
// Thread-safe.

/// Opens a key of the local machine. A file that is missing holds no keys; one that cannot be read, is no plain file or
/// is larger than 1 MiB denies access.
win32::LSTATUS openStoredKey(const std::string& file, const char16_t* path, RegistryHandle* opened);
/// A value of the key itself; the path is not looked at.
win32::LSTATUS getStoredValue(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                              std::uint32_t* type, void* data, std::uint32_t* size);
win32::LSTATUS closeStoredKey(RegistryHandle key);

} // namespace Utilities
