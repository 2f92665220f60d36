// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Utilities/DriverKit.h"

namespace Utilities {

/// A root of the registry, or a key that was opened; as wide as a pointer.
using RegistryHandle = std::uintptr_t;

// Names and numbers are those of the platform that has a registry.
inline constexpr win32::LSTATUS ERROR_SUCCESS = 0;
inline constexpr win32::LSTATUS ERROR_FILE_NOT_FOUND = 2;
inline constexpr win32::LSTATUS ERROR_ACCESS_DENIED = 5;
inline constexpr win32::LSTATUS ERROR_MORE_DATA = 234;
inline constexpr win32::LSTATUS ERROR_UNSUPPORTED_TYPE = 1630;

// What a key is opened for.
inline constexpr std::uint32_t KEY_READ = 0x20019;
inline constexpr std::uint32_t KEY_WOW64_32KEY = 0x0200; ///< what a 32-bit program sees

inline constexpr std::uint32_t REG_SZ = 1;           ///< a text
inline constexpr std::uint32_t RRF_RT_REG_SZ = 0x02; ///< allows texts in a query

/// The root of what is installed for every user: a 32-bit number, widened with its sign.
inline constexpr auto HKEY_LOCAL_MACHINE = static_cast<RegistryHandle>(static_cast<std::int32_t>(0x80000002));

/// The operations of the registry that the library uses. Texts are UTF-16, sizes are bytes.
struct RegistryApi {
    /// Opens a key below another one, to be closed with RegCloseKey.
    win32::LSTATUS (*RegOpenKeyExW)(RegistryHandle key, const char16_t* path, std::uint32_t options,
                                    std::uint32_t access, RegistryHandle* opened);
    /// Reads a value of a type that the flags allow. Texts end in a zero, which counts. Type and data may be null; the
    /// size is that of the data, then that of the value.
    win32::LSTATUS (*RegGetValueW)(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                                   std::uint32_t* type, void* data, std::uint32_t* size);
    win32::LSTATUS (*RegCloseKey)(RegistryHandle key);
};

/// The table of the platform, or the one in its place. Thread-safe.
const RegistryApi& registryApi();

/// Puts another table, which must outlive its use, in place of the platform's; null goes back to that.
void useRegistryApi(const RegistryApi* api);

} // namespace Utilities
