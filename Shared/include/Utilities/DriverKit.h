#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "Export.h"

namespace win32 {

/// The status of a registry operation; the numbers are those of the platform that has a registry.
using LSTATUS = std::int32_t;

/// A registry operation failed.
class QUILL_API RegistryError : public std::runtime_error {
public:
    RegistryError(const char* message, LSTATUS errorCode) : std::runtime_error(message), m_ErrorCode(errorCode) {}

    LSTATUS m_ErrorCode; ///< what the operation returned, such as 2: not found
};

} // namespace win32

/// The version of the maker's driver kit, in UTF-8, from the record of its installation. Thread-safe.
///
/// Where the platform has no registry, the record is the file /etc/quillcamera/driverkit.reg in the format in which a
/// registry is exported.
/// @throws win32::RegistryError "Cannot open registry key: RegOpenKeyEx failed."  it is not installed
/// @throws win32::RegistryError "Cannot read string from registry"  the record names no version
/// @throws std::range_error "bad conversion"  the version is not text
QUILL_API std::string getZephVersion();

/// Whether the driver kit is installed. Thread-safe.
QUILL_API bool isZephInstalled();
