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

// Access rights of an open key.
inline constexpr std::uint32_t KEY_READ = 0x20019;
inline constexpr std::uint32_t KEY_WOW64_32KEY = 0x0200; ///< the view of a 32-bit program

inline constexpr std::uint32_t REG_SZ = 1;           ///< a text
inline constexpr std::uint32_t RRF_RT_REG_SZ = 0x02; ///< allows texts in a query

/// The root of the machine-wide settings: a 32-bit number, sign-extended.
inline constexpr auto HKEY_LOCAL_MACHINE = static_cast<RegistryHandle>(static_cast<std::int32_t>(0x80000002));

/// The operations of the registry that the library uses. Texts are UTF-16, sizes are bytes.
struct RegistryApi {
    /// Opens a key below another key; close it with RegCloseKey.
    win32::LSTATUS (*RegOpenKeyExW)(RegistryHandle key, const char16_t* path, std::uint32_t options,
                                    std::uint32_t access, RegistryHandle* opened);
    /// Reads a value of a type that the flags allow. Texts end in a zero, which the size includes. Type and data may be
    /// null; the size is that of the buffer on entry and that of the value on return.
    win32::LSTATUS (*RegGetValueW)(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                                   std::uint32_t* type, void* data, std::uint32_t* size);
    win32::LSTATUS (*RegCloseKey)(RegistryHandle key);
};

/// The operations of the platform's registry, or of a file in its place.
RegistryApi platformRegistryApi();

/// The table of the platform, or its replacement. Thread-safe.
const RegistryApi& registryApi();

/// Replaces the platform's table by another one, which must outlive its use; null restores the platform's.
void useRegistryApi(const RegistryApi* api);

} // namespace Utilities
