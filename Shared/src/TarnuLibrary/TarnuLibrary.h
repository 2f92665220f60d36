// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "TarnuLibrary/TarnuOperations.h"

namespace Usb3VisionAdapter {

/// The operations of the USB3 Vision access library, as pointers to the exports of the flat library. A missing
/// operation returns 0 or null, so that a missing library means no cameras and no error.
struct TarnuLibrary {
    /// Makes every operation fail.
    TarnuLibrary();

// NOLINTNEXTLINE(bugprone-macro-parentheses): a declaration
#define QUILL_DECLARE_OPERATION(name, result, parameters) result(*name) parameters;
    TARNU_OPERATIONS(QUILL_DECLARE_OPERATION)
#undef QUILL_DECLARE_OPERATION

    /// Binds to the flat library in a folder.
    static TarnuLibrary bindTo(const std::string& folder);
};

/// The table that the adapter uses, bound on first use to the flat library beside this one. Thread-safe.
const TarnuLibrary& tarnuLibrary();

/// Makes the adapter use another table, which must outlive its use; null restores the flat library. Call only while no
/// USB3 Vision camera exists.
void useTarnuLibrary(const TarnuLibrary* library);

} // namespace Usb3VisionAdapter
