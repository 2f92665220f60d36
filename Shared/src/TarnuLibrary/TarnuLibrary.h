// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "TarnuLibrary/TarnuOperations.h"

namespace Usb3VisionAdapter {

/// The operations of the USB3 Vision access library, as pointers to what the flat library exports. An operation that is
/// not there answers 0 or null, so that a missing library means no cameras and no error.
struct TarnuLibrary {
    /// Every operation failing.
    TarnuLibrary();

// NOLINTNEXTLINE(bugprone-macro-parentheses): a declaration
#define QUILL_DECLARE_OPERATION(name, result, parameters) result(*name) parameters;
    TARNU_OPERATIONS(QUILL_DECLARE_OPERATION)
#undef QUILL_DECLARE_OPERATION

    /// The operations of the flat library in a folder.
    static TarnuLibrary bindTo(const std::string& folder);
};

/// The table that the adapter calls through: at first use bound to the flat library beside this one. Thread-safe.
const TarnuLibrary& tarnuLibrary();

/// Makes the adapter call through another table, which must outlive its use; null goes back to the flat library. Only
/// while no USB3 Vision camera exists.
void useTarnuLibrary(const TarnuLibrary* library);

} // namespace Usb3VisionAdapter
