// SPDX-License-Identifier: Apache-2.0

#include "OrvexApi/OrvexApi.h"

#include <cstdint>

#include "Base/OperationBinding.h"
#include "Base/SharedLibrary.h"
#include "Base/TableInUse.h"

namespace OrvexAdapter {

namespace {

// NOLINTNEXTLINE(bugprone-macro-parentheses): a term of a sum
#define QUILL_COUNT_OPERATION(role, number, result, failure, parameters) +1
constexpr int kOperations = 0 ORVEX_OPERATIONS(QUILL_COUNT_OPERATION);
#undef QUILL_COUNT_OPERATION
static_assert(kOperations == 56);
static_assert(sizeof(OrvexApi) == kOperations * sizeof(void (*)()));

OrvexApi bindBesideThisLibrary() {
    return OrvexApi::bindTo(Base::getLibraryFolder());
}

Base::TableInUse<OrvexApi, bindBesideThisLibrary> tableInUse;

} // namespace

OrvexApi::OrvexApi() {
#define QUILL_UNBIND_OPERATION(role, number, result, failure, parameters) Base::unbind<failure>(role);
    ORVEX_OPERATIONS(QUILL_UNBIND_OPERATION)
#undef QUILL_UNBIND_OPERATION
}

OrvexApi OrvexApi::bindTo(const std::string& folder) {
    OrvexApi api;
    const Base::SharedLibrary library(folder, "orvexapi");
#define QUILL_BIND_OPERATION(role, number, result, failure, parameters)                                                \
    Base::bind(api.role, library.find("orvexapi", number));
    ORVEX_OPERATIONS(QUILL_BIND_OPERATION)
#undef QUILL_BIND_OPERATION
    return api;
}

const OrvexApi& orvexApi() {
    return tableInUse.get();
}

void useOrvexApi(const OrvexApi* api) {
    tableInUse.replace(api);
}

bool drivesSoftwareDevices() {
    static const bool answer = [] {
        std::uint32_t (*ask)() = nullptr;
        Base::unbind<0>(ask);
        Base::bind(ask, Base::SharedLibrary(Base::getLibraryFolder(), "orvexapi").find(ORVEX_SOFTWARE_DEVICES));
        return ask() != 0;
    }();
    return answer;
}

} // namespace OrvexAdapter
