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
