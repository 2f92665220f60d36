#include "OrvexApi/OrvexApi.h"

#include <atomic>
#include <type_traits>

#include "Internal/NeverDestroyed.h"
#include "Internal/SharedLibrary.h"

namespace OrvexAdapter {

namespace {

#define QUILL_COUNT_OPERATION(role, number, result, failure, parameters) +1
constexpr int kOperations = 0 ORVEX_OPERATIONS(QUILL_COUNT_OPERATION);
#undef QUILL_COUNT_OPERATION
static_assert(kOperations == 56);
static_assert(sizeof(OrvexApi) == kOperations * sizeof(void (*)()));

template <typename Result, int Failure, typename... Parameters>
Result failing(Parameters... /*parameters*/) {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(Failure);
    }
}

template <int Failure, typename Result, typename... Parameters>
void unbind(Result (*&operation)(Parameters...)) {
    operation = failing<Result, Failure, Parameters...>;
}

template <typename Operation>
void bind(Operation& operation, void* symbol) {
    if (symbol != nullptr) {
        operation = reinterpret_cast<Operation>(symbol);
    }
}

std::atomic<const OrvexApi*> replacement{nullptr};

} // namespace

OrvexApi::OrvexApi() {
#define QUILL_UNBIND_OPERATION(role, number, result, failure, parameters) unbind<failure>(role);
    ORVEX_OPERATIONS(QUILL_UNBIND_OPERATION)
#undef QUILL_UNBIND_OPERATION
}

OrvexApi OrvexApi::bindTo(const std::string& folder) {
    OrvexApi api;
    const Internal::SharedLibrary library(folder, "orvexapi");
#define QUILL_BIND_OPERATION(role, number, result, failure, parameters)                                                \
    bind(api.role, library.find("orvexapi_" #number));
    ORVEX_OPERATIONS(QUILL_BIND_OPERATION)
#undef QUILL_BIND_OPERATION
    return api;
}

const OrvexApi& orvexApi() {
    if (const OrvexApi* api = replacement.load(std::memory_order_acquire)) {
        return *api;
    }
    static Internal::NeverDestroyed<OrvexApi> bound(OrvexApi::bindTo(Internal::getLibraryFolder()));
    return bound.get();
}

void useOrvexApi(const OrvexApi* api) {
    replacement.store(api, std::memory_order_release);
}

} // namespace OrvexAdapter
