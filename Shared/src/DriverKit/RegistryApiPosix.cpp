// SPDX-License-Identifier: Apache-2.0

#include "DriverKit/RegistryApi.h"
#include "DriverKit/RegistryFile.h"

namespace Utilities {

namespace {

/// On a platform without a registry, installers of the driver kit write their entries to this file.
constexpr const char* kRegistryFile = "/etc/quillcamera/drivers.conf";

} // namespace

RegistryApi platformRegistryApi() {
    return {[](RegistryHandle /*root*/, const char16_t* path, std::uint32_t /*options*/, std::uint32_t /*access*/,
               RegistryHandle* opened) { return openStoredKey(kRegistryFile, path, opened); },
            getStoredValue, closeStoredKey};
}

} // namespace Utilities
