// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Export.h"

// The version of these headers, which CMake reads here. Before 1.0, a new minor number may change what an application
// compiles against or links; a new patch number never does.
#define QUILL_VERSION_MAJOR 0
#define QUILL_VERSION_MINOR 1
#define QUILL_VERSION_PATCH 0

/// A version as a number, for comparisons: `#if QUILL_VERSION >= QUILL_MAKE_VERSION(0, 2, 0)`.
#define QUILL_MAKE_VERSION(major, minor, patch) ((major)*1000000L + (minor)*1000L + (patch))
#define QUILL_VERSION QUILL_MAKE_VERSION(QUILL_VERSION_MAJOR, QUILL_VERSION_MINOR, QUILL_VERSION_PATCH)

#define QUILL_QUOTE_UNEXPANDED(text) #text
#define QUILL_QUOTE(number) QUILL_QUOTE_UNEXPANDED(number)
/// The version as a text, such as "0.1.0".
#define QUILL_VERSION_TEXT                                                                                             \
    QUILL_QUOTE(QUILL_VERSION_MAJOR) "." QUILL_QUOTE(QUILL_VERSION_MINOR) "." QUILL_QUOTE(QUILL_VERSION_PATCH)

namespace CameraInterface {

/// Returns the version of the library that runs, such as "0.1.0"; never freed. Thread-safe.
///
/// It differs from QUILL_VERSION_TEXT where a library of another patch number was installed later.
QUILL_API const char* getQuillVersion() noexcept;

} // namespace CameraInterface
