// SPDX-License-Identifier: Apache-2.0

#include "DriverKit/RegistryApi.h"

#include "Base/TableInUse.h"

namespace Utilities {

namespace {

Base::TableInUse<RegistryApi, platformRegistryApi> tableInUse;

} // namespace

const RegistryApi& registryApi() {
    return tableInUse.get();
}

void useRegistryApi(const RegistryApi* api) {
    tableInUse.replace(api);
}

} // namespace Utilities
