// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "OrvexApi/OrvexOperations.h"

namespace OrvexAdapter {

/// The operations of the camera SDK, as pointers to the exports of the flat library. A missing operation returns its
/// failure value, so that a missing library means no cameras and no error.
struct OrvexApi {
    // The boundary's record, not the public one of this namespace.
    using _ORVEX_STREAM_STATS = ::_ORVEX_STREAM_STATS; // NOLINT(*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

    /// Makes every operation fail.
    OrvexApi();

// NOLINTNEXTLINE(bugprone-macro-parentheses): a name and a list of parameters
#define QUILL_DECLARE_OPERATION(role, number, result, failure, parameters) result(*role) parameters;
    ORVEX_OPERATIONS(QUILL_DECLARE_OPERATION)
#undef QUILL_DECLARE_OPERATION

    /// Binds to the flat library in a folder.
    static OrvexApi bindTo(const std::string& folder);
};

/// The table that the adapter uses, bound on first use to the flat library beside this one. Thread-safe.
const OrvexApi& orvexApi();

/// Makes the adapter use another table, which must outlive its use; null restores the flat library. Call only while no
/// SDK camera exists.
void useOrvexApi(const OrvexApi* api);

/// Whether the flat library beside this one says that its devices are software; see ORVEX_SOFTWARE_DEVICES.
/// Thread-safe.
bool drivesSoftwareDevices();

} // namespace OrvexAdapter
