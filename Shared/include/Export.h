// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what the shared library exports; everything else in it stays hidden.
#if defined(_WIN32)
#    if defined(QUILL_BUILDING_LIBRARY)
#        define QUILL_API __declspec(dllexport)
#    else
#        define QUILL_API __declspec(dllimport)
#    endif
#else
#    define QUILL_API __attribute__((visibility("default")))
#endif

/// Marks what is exported for those of the library's own adapters that are libraries of their own. Not for
/// applications: it may change in every version.
#if defined(_WIN32) // no adapter is a library of its own
#    define QUILL_ADAPTER_API
#else
#    define QUILL_ADAPTER_API QUILL_API
#endif
