// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "OrvexApi/OrvexOperations.h"

namespace OrvexAdapter {

/// The operations of the camera SDK, as pointers to what the flat library exports. An operation that is not there
/// answers its failure value, so that a missing library means no cameras and no error.
struct OrvexApi {
    // The boundary's record, not the public one of this namespace.
    using _ORVEX_STREAM_STATS = ::_ORVEX_STREAM_STATS; // NOLINT(*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

    /// Every operation failing.
    OrvexApi();

// NOLINTNEXTLINE(bugprone-macro-parentheses): a name and a list of parameters
#define QUILL_DECLARE_OPERATION(role, number, result, failure, parameters) result(*role) parameters;
    ORVEX_OPERATIONS(QUILL_DECLARE_OPERATION)
#undef QUILL_DECLARE_OPERATION

    /// The operations of the flat library in a folder.
    static OrvexApi bindTo(const std::string& folder);
};

/// The table that the adapter calls through: at first use bound to the flat library beside this one. Thread-safe.
const OrvexApi& orvexApi();

/// Makes the adapter call through another table, which must outlive its use; null goes back to the flat library. Only
/// while no SDK camera exists.
void useOrvexApi(const OrvexApi* api);

} // namespace OrvexAdapter
