// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "../Export.h"

/// The record of the installed driver kit.
namespace win32 {

/// The status of a registry operation; the numbers are those of the platform that has a registry.
using LSTATUS = std::int32_t;

/// A registry operation failed.
class QUILL_API RegistryError : public std::runtime_error {
public:
    RegistryError(const char* message, LSTATUS errorCode) : std::runtime_error(message), m_ErrorCode(errorCode) {}

    LSTATUS m_ErrorCode; ///< the status that the operation returned, such as 2: not found
};

} // namespace win32

/// Returns the version of the maker's driver kit, in UTF-8, from the record of its installation. Thread-safe.
///
/// On a platform without a registry, the record is a line of the UTF-8 file /etc/quillcamera/drivers.conf:
/// `SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}\DisplayVersion=4.5.1.0`.
/// @throws win32::RegistryError "Cannot open registry key: RegOpenKeyEx failed."  status 2: the kit is not installed;
///     5: its record cannot be read
/// @throws win32::RegistryError "Cannot read string from registry"  status 2: the record has no version; 1630: the
///     version is not a text
/// @throws std::range_error "bad conversion"  the version is not UTF-8
QUILL_API std::string getZephVersion();

/// Whether the driver kit is installed. Thread-safe.
QUILL_API bool isZephInstalled();
