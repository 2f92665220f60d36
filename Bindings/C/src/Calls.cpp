// SPDX-License-Identifier: Apache-2.0

#include "Calls.h"

#include <iterator>
#include <new>
#include <stdexcept>
#include <system_error>

#include <Quill.h>

#include "Handles.h"

namespace CInterface {

using namespace KestrelExceptions;

namespace {

struct StatusName {
    quill_status status;
    const char* name;
};
constexpr StatusName kStatusNames[] = {
    {QUILL_OK, "OK"},
    {QUILL_EXCEPTION, "KestrelException"},
    {QUILL_EXCEPTION_CAMERA, "KestrelException_Camera"},
    {QUILL_EXCEPTION_CAMERA_STATE, "KestrelException_CameraState"},
    {QUILL_EXCEPTION_FUNCTION, "KestrelException_Function"},
    {QUILL_EXCEPTION_INVALID_ARGUMENT, "KestrelException_InvalidArgument"},
    {QUILL_EXCEPTION_PROPERTY, "KestrelException_Property"},
    {QUILL_EXCEPTION_PROPERTY_COMPARISON, "KestrelException_PropertyComparison"},
    {QUILL_EXCEPTION_STREAM, "KestrelException_Stream"},
    {QUILL_STD_INVALID_ARGUMENT, "std::invalid_argument"},
    {QUILL_STD_OUT_OF_RANGE, "std::out_of_range"},
    {QUILL_STD_RUNTIME_ERROR, "std::runtime_error"},
    {QUILL_STD_RANGE_ERROR, "std::range_error"},
    {QUILL_STD_SYSTEM_ERROR, "std::system_error"},
    {QUILL_STD_BAD_ALLOC, "std::bad_alloc"},
    {QUILL_REGISTRY_ERROR, "win32::RegistryError"},
    {QUILL_OTHER_EXCEPTION, "another exception"},
    {QUILL_INVALID_HANDLE, "InvalidHandle"},
    {QUILL_NULL_ARGUMENT, "NullArgument"},
    {QUILL_INVALID_SIZE, "InvalidSize"},
    {QUILL_CANCELLED, "Cancelled"},
};

/// The status of one exception class.
struct ExceptionClass {
    bool (*contains)(const std::exception*);
    quill_status status;
};

template <typename Exception>
constexpr ExceptionClass classOf(quill_status status) {
    return {[](const std::exception* failure) { return dynamic_cast<const Exception*>(failure) != nullptr; }, status};
}

/// Derived classes before their bases.
constexpr ExceptionClass kExceptionClasses[] = {
    classOf<KestrelException_Camera>(QUILL_EXCEPTION_CAMERA),
    classOf<KestrelException_CameraState>(QUILL_EXCEPTION_CAMERA_STATE),
    classOf<KestrelException_Function>(QUILL_EXCEPTION_FUNCTION),
    classOf<KestrelException_InvalidArgument>(QUILL_EXCEPTION_INVALID_ARGUMENT),
    classOf<KestrelException_Property>(QUILL_EXCEPTION_PROPERTY),
    classOf<KestrelException_PropertyComparison>(QUILL_EXCEPTION_PROPERTY_COMPARISON),
    classOf<KestrelException_Stream>(QUILL_EXCEPTION_STREAM),
    classOf<KestrelException>(QUILL_EXCEPTION),
    classOf<win32::RegistryError>(QUILL_REGISTRY_ERROR),
    classOf<std::system_error>(QUILL_STD_SYSTEM_ERROR),
    classOf<std::invalid_argument>(QUILL_STD_INVALID_ARGUMENT),
    classOf<std::out_of_range>(QUILL_STD_OUT_OF_RANGE),
    classOf<std::range_error>(QUILL_STD_RANGE_ERROR),
    classOf<std::runtime_error>(QUILL_STD_RUNTIME_ERROR),
    classOf<std::bad_alloc>(QUILL_STD_BAD_ALLOC),
    classOf<std::exception>(QUILL_OTHER_EXCEPTION),
};

quill_status statusOf(const std::exception& failure) {
    for (const ExceptionClass& candidate : kExceptionClasses) {
        if (candidate.contains(&failure)) {
            return candidate.status;
        }
    }
    return QUILL_OTHER_EXCEPTION;
}

/// Cuts a text that is too long at the beginning of a UTF-8 character.
template <std::size_t Size>
void setText(char (&field)[Size], const char* text) {
    std::size_t length = std::strlen(text);
    if (length >= Size) {
        length = Size - 1;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
            --length;
        }
    }
    std::memcpy(field, text, length);
    field[length] = 0;
}

quill_error describe(quill_status status, const char* sentence) {
    quill_error error{};
    error.status = status;
    setText(error.sentence, sentence);
    return error;
}

quill_error describe(const std::exception& failure) {
    quill_error error = describe(statusOf(failure), failure.what());
    if (const auto* ours = dynamic_cast<const KestrelException*>(&failure)) {
        setText(error.word, ours->who());
        setText(error.sentence, ours->why());
        setText(error.place, ours->where());
    } else if (const auto* ofSystem = dynamic_cast<const std::system_error*>(&failure)) {
        error.code = ofSystem->code().value();
    } else if (const auto* ofRegistry = dynamic_cast<const win32::RegistryError*>(&failure)) {
        error.code = ofRegistry->m_ErrorCode;
    }
    return error;
}

quill_error describeHandled() {
    try {
        throw;
    } catch (const std::exception& failure) {
        return describe(failure);
    } catch (const InvalidHandle&) {
        return describe(QUILL_INVALID_HANDLE, "The handle is not valid, or not any more.");
    } catch (const NullArgument&) {
        return describe(QUILL_NULL_ARGUMENT, "An argument is NULL.");
    } catch (const InvalidSize&) {
        return describe(QUILL_INVALID_SIZE, "The size at the start of a struct is too small.");
    } catch (const Cancelled&) {
        return describe(QUILL_CANCELLED, "The operation was cancelled.");
    } catch (...) {
        return describe(QUILL_OTHER_EXCEPTION, "An unknown failure.");
    }
}

} // namespace

quill_status describeException(quill_error* error) noexcept {
    const quill_error described = describeHandled();
    if (error != nullptr && error->size >= sizeof(quill_error)) {
        copyToCaller(*error, described);
    }
    return described.status;
}

} // namespace CInterface

const char* quill_status_name(quill_status status) {
    using CInterface::kStatusNames;
    const auto* const entry =
        std::find_if(std::begin(kStatusNames), std::end(kStatusNames),
                     [status](const CInterface::StatusName& candidate) { return candidate.status == status; });
    return entry == std::end(kStatusNames) ? "unknown" : entry->name;
}
