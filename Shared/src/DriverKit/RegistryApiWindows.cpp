// SPDX-License-Identifier: Apache-2.0

// Before the system's header, whose macros have the same names as this one's constants.
#include "DriverKit/RegistryApi.h"

#include <type_traits>

#include <windows.h>

namespace Utilities {

namespace {

static_assert(sizeof(RegistryHandle) == sizeof(HKEY) && sizeof(wchar_t) == sizeof(char16_t));
static_assert(std::is_same_v<DWORD, unsigned long> && sizeof(DWORD) == sizeof(std::uint32_t));

HKEY keyOf(RegistryHandle handle) {
    return reinterpret_cast<HKEY>(handle);
}

LPCWSTR wide(const char16_t* text) {
    return reinterpret_cast<LPCWSTR>(text);
}

} // namespace

RegistryApi platformRegistryApi() {
    return {[](RegistryHandle key, const char16_t* path, std::uint32_t options, std::uint32_t access,
               RegistryHandle* opened) -> win32::LSTATUS {
                return RegOpenKeyExW(keyOf(key), wide(path), options, access, reinterpret_cast<PHKEY>(opened));
            },
            [](RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags, std::uint32_t* type,
               void* data, std::uint32_t* size) -> win32::LSTATUS {
                return RegGetValueW(keyOf(key), wide(path), wide(name), flags, reinterpret_cast<LPDWORD>(type), data,
                                    reinterpret_cast<LPDWORD>(size));
            },
            [](RegistryHandle key) -> win32::LSTATUS { return RegCloseKey(keyOf(key)); }};
}

} // namespace Utilities
