// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

/// Functions that fill the tables of operations of flat libraries.
namespace Base {

template <typename Result, int Failure, typename... Parameters>
Result failing(Parameters... /*parameters*/) {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(Failure);
    }
}

/// Makes an operation return its failure value, which is null for a pointer.
template <int Failure, typename Result, typename... Parameters>
void unbind(Result (*&operation)(Parameters...)) {
    operation = failing<Result, Failure, Parameters...>;
}

/// Makes an operation call the exported symbol of a library; a null symbol leaves the operation unchanged.
template <typename Operation>
void bind(Operation& operation, void* symbol) {
    if (symbol != nullptr) {
        operation = reinterpret_cast<Operation>(symbol);
    }
}

} // namespace Base
