// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "quillcamera.h"

/// How every function of the interface is made: arguments are checked, the C++ operation is called, and its exception
/// becomes a status.
namespace CInterface {

class NullArgument {};
class InvalidSize {};
/// Thrown by a progress function that does not continue.
class Cancelled {};

/// Returns the status of the exception that is being handled, and describes it.
/// @param error  may be null
quill_status describeException(quill_error* error) noexcept;

template <typename Body>
quill_status call(quill_error* error, Body body) noexcept {
    try {
        body();
        return QUILL_OK;
    } catch (...) {
        return describeException(error);
    }
}

/// @throws NullArgument
template <typename... Pointers>
void requireAll(Pointers... pointers) {
    if ((!pointers || ...)) {
        throw NullArgument();
    }
}

/// Data of no bytes may be null.
inline void requireData(const void* data, size_t length) {
    if (length > 0) {
        requireAll(data);
    }
}

inline std::vector<unsigned char> dataOf(const void* data, size_t length) {
    requireData(data, length);
    const auto* const begin = static_cast<const unsigned char*>(data);
    return {begin, begin + length};
}

// A struct that begins with its size, on the side of the caller: it may have fewer members than here, or more.

/// @throws InvalidSize  smaller than the struct ever was
template <typename Struct>
void requireSize(const Struct& theirs) {
    if (theirs.size < sizeof(Struct)) { // no member was added yet
        throw InvalidSize();
    }
}

/// Copies what the caller has of a struct; for a null pointer, the defaults stay.
template <typename Struct>
Struct fromCaller(const Struct* theirs, Struct defaults) {
    if (theirs != nullptr) {
        requireSize(*theirs);
        std::memcpy(&defaults, theirs, std::min(theirs->size, sizeof(Struct)));
    }
    return defaults;
}

/// Copies what the caller's struct has room for, and its size.
template <typename Struct>
void copyToCaller(Struct& theirs, Struct ours) noexcept {
    ours.size = std::min(theirs.size, sizeof(Struct));
    std::memcpy(&theirs, &ours, ours.size);
}

/// @throws InvalidSize
template <typename Struct>
void toCaller(Struct& theirs, const Struct& ours) {
    requireSize(theirs);
    copyToCaller(theirs, ours);
}

} // namespace CInterface
