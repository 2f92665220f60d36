#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Utilities/RegistryApi.h"

namespace Utilities {

// The three operations of the registry over a file in its export format, which is read whenever a key is opened.
// Thread-safe.

/// Opens a key of the local machine. In the 32-bit view the keys of SOFTWARE are those of SOFTWARE\WOW6432Node.
/// A file that is missing holds no keys; one that cannot be read, or is larger than 1 MiB, denies access.
win32::LSTATUS openStoredKey(const std::string& file, RegistryHandle root, const char16_t* path, std::uint32_t access,
                             RegistryHandle* opened);
win32::LSTATUS getStoredValue(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                              std::uint32_t* type, void* data, std::uint32_t* size);
win32::LSTATUS closeStoredKey(RegistryHandle key);

/// How many keys are open.
std::size_t countOpenStoredKeys();

} // namespace Utilities
