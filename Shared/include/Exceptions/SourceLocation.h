// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace KestrelExceptions {

/// The place of a throw: a source path relative to the project and a line counted from 1.
struct SourceLocation {
    const char* file;
    int line;
};

} // namespace KestrelExceptions

/// The source location at which the macro is used.
#define QUILL_HERE                                                                                                     \
    ::KestrelExceptions::SourceLocation {                                                                              \
        __FILE__, __LINE__                                                                                             \
    }
