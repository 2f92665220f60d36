#include "Internal/TableInUse.h"
#include "Utilities/RegistryApi.h"
#include "Utilities/RegistryStore.h"

namespace Utilities {

namespace {

/// Where there is no registry, this file holds what the driver kit's installer would enter there.
constexpr const char* kRegistryFile = "/etc/quillcamera/driverkit.reg";

RegistryApi fileTable() {
    return {[](RegistryHandle key, const char16_t* path, std::uint32_t /*options*/, std::uint32_t access,
               RegistryHandle* opened) { return openStoredKey(kRegistryFile, key, path, access, opened); },
            getStoredValue, closeStoredKey};
}

Internal::TableInUse<RegistryApi, fileTable> tableInUse;

} // namespace

const RegistryApi& registryApi() {
    return tableInUse.get();
}

void useRegistryApi(const RegistryApi* api) {
    tableInUse.replace(api);
}

} // namespace Utilities
