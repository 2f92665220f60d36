// SPDX-License-Identifier: Apache-2.0

#include "Support/BoundaryRecording.h"

#include <cstdint>
#include <type_traits>

namespace Benchmarks {

namespace {

using OrvexAdapter::OrvexApi;
using Context = BoundaryRecording::Context;

constexpr std::size_t kScratchBytes = std::size_t{4} << 20;

OrvexApi recorded;                                    // the table behind the spies
std::vector<BoundaryRecording::Call>* into = nullptr; // while a recording runs

template <typename Parameter>
Parameter inContext(Parameter parameter, const Context& context) {
    if constexpr (std::is_same_v<Parameter, void*>) {
        return context.handle;
    } else if constexpr (std::is_pointer_v<Parameter> && !std::is_function_v<std::remove_pointer_t<Parameter>>) {
        return static_cast<Parameter>(context.memory);
    } else {
        return parameter;
    }
}

/// Replaces an operation in the table; records each call and forwards it.
template <auto Operation>
struct Spy;
template <typename Result, typename... Parameters, Result (*OrvexApi::*Operation)(Parameters...)>
struct Spy<Operation> {
    static Result call(Parameters... parameters) {
        into->push_back([=](const OrvexApi& api, Context& context) {
            const Result result = (api.*Operation)(inContext(parameters, context)...);
            if constexpr (std::is_pointer_v<Result>) {
                context.handle = result;
            }
        });
        return (recorded.*Operation)(parameters...);
    }
};

} // namespace

BoundaryRecording::BoundaryRecording(const std::function<void()>& action) {
    const OrvexApi* const before = &OrvexAdapter::orvexApi();
    recorded = *before;
    into = &m_Calls;
    OrvexApi spies;
#define QUILL_SPY_ON_OPERATION(role, number, result, failure, parameters) spies.role = Spy<&OrvexApi::role>::call;
    ORVEX_OPERATIONS(QUILL_SPY_ON_OPERATION)
#undef QUILL_SPY_ON_OPERATION
    OrvexAdapter::useOrvexApi(&spies);
    action();
    OrvexAdapter::useOrvexApi(before);
}

void BoundaryRecording::replay(void* handle) const {
    static std::vector<unsigned char> scratch(kScratchBytes);
    const OrvexApi& api = OrvexAdapter::orvexApi();
    Context context{handle, scratch.data()};
    for (const Call& call : m_Calls) {
        call(api, context);
    }
}

} // namespace Benchmarks
