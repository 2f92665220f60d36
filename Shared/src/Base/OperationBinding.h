// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

/// How the tables of operations of flat libraries are filled.
namespace Base {

template <typename Result, int Failure, typename... Parameters>
Result failing(Parameters... /*parameters*/) {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(Failure);
    }
}

/// Makes an operation answer its failure value, which is null for a pointer.
template <int Failure, typename Result, typename... Parameters>
void unbind(Result (*&operation)(Parameters...)) {
    operation = failing<Result, Failure, Parameters...>;
}

/// Makes an operation call what a library exports; a null symbol leaves it as it is.
template <typename Operation>
void bind(Operation& operation, void* symbol) {
    if (symbol != nullptr) {
        operation = reinterpret_cast<Operation>(symbol);
    }
}

} // namespace Base
