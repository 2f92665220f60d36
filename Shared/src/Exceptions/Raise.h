// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

#include "Exceptions/KestrelExceptions.h"
#include "Exceptions/SourceLocation.h"

namespace KestrelExceptions {

/// One kind of failure: the word that who() returns and the sentence that describes it.
struct ErrorKind {
    const char* name;
    const char* description;
};

/// Every kind of failure that the library reports. The exception class determines the subject.
namespace Errors {
inline constexpr ErrorKind kCameraNotFound{"CameraNotFound", "Camera was not found in the list of available cameras."};
inline constexpr ErrorKind kCameraEnumeration{"CameraEnumeration ", "Failed to enumerate cameras."};
inline constexpr ErrorKind kCameraConnection{"CameraConnection", "Failed to connect to camera."};
inline constexpr ErrorKind kCameraState{"CameraState", "State transition not allowed."};
inline constexpr ErrorKind kPropertyUnsupported{"PropertyUnsupported", "Property is not supported."};
inline constexpr ErrorKind kPropertyReadOnly{"PropertyReadOnly", "Read only property value cannot be changed."};
inline constexpr ErrorKind kPropertyReadFailure{"PropertyReadFailure", "Property value could not be read."};
inline constexpr ErrorKind kPropertyWriteFailure{"PropertyWriteFailure", "Property value could not be written."};
inline constexpr ErrorKind kPropertyRangeReadFailure{"PropertyRangeReadFailure",
                                                     "Property range information could not be read."};
inline constexpr ErrorKind kPropertyErrorUnknown{"PropertyErrorUnknown", "An unknown error occured."};
inline constexpr ErrorKind kPropertyUnknown{"PropertyUnknown", "Unknown property."};
inline constexpr ErrorKind kPropertyTypeMismatch{"PropertyTypeMismatch", "Property types don't match."};
inline constexpr ErrorKind kFunctionUnsupported{"FunctionUnsupported", "Function not supported."};
inline constexpr ErrorKind kFunctionExecution{"FunctionExecution", "Failed to execute function."};
inline constexpr ErrorKind kArgumentEmpty{"ArgumentEmpty", "Provided argument is empty."};
inline constexpr ErrorKind kArgumentUnhandled{"ArgumentUnhandled", "Provided argument value cannot be handled."};
inline constexpr ErrorKind kInvalidStreamFormat{"InvalidStreamFormat", "Stream format is invalid."};
inline constexpr ErrorKind kInvalidStreamSettings{"InvalidStreamSettings", "Stream settings are invalid."};
inline constexpr ErrorKind kRegisterStreamCallback{"RegisterStreamCallback", "Unable to register streaming callback."};
inline constexpr ErrorKind kRemoveStreamCallback{"RemoveStreamCallback", "Unable to remove streaming callback."};
inline constexpr ErrorKind kStartStream{"StartStream", "Unable to start stream."};
inline constexpr ErrorKind kStreamMemory{"StartStream", "There is not enough memory for a frame."};
inline constexpr ErrorKind kStopStream{"StopStream", "Unable to stop stream."};
inline constexpr ErrorKind kStreamTimeout{"StreamTimeout", "No frame arrived in time."};
inline constexpr ErrorKind kStreamStopped{"StreamStopped", "The stream does not run, or was stopped."};
inline constexpr ErrorKind kStreamEnded{"StreamStopped", "The camera's capture ended before a frame arrived."};
inline constexpr ErrorKind kStreamOutOfMemory{"StreamStopped", "There was not enough memory for the next frame."};
inline constexpr ErrorKind kStreamCameraGone{"StreamStopped", "The camera is gone."};
inline constexpr ErrorKind kStreamUnsupported{"StreamUnsupported", "The camera has no stream."};
inline constexpr ErrorKind kSettingsInvalid{"SettingsInvalid", "Settings cannot be read."};
inline constexpr ErrorKind kSettingsModel{"SettingsModel", "The settings are those of another model."};
inline constexpr ErrorKind kNetworkSettings{"NetworkSettings",
                                            "The camera's network settings cannot be read or changed."};
inline constexpr ErrorKind kNetworkTimeout{"NetworkTimeout", "The camera did not answer in time."};
inline constexpr ErrorKind kWouldWaitForItself{
    "WouldWaitForItself", "This operation waits for the callback that called it. Call it from another thread."};
} // namespace Errors

/// Throws an exception of @p kind about @p subjects, located at @p here.
template <typename Exception, typename... Subjects>
[[noreturn]] void raise(const SourceLocation& here, const ErrorKind& kind, const Subjects&... subjects) {
    if constexpr (std::is_same_v<Exception, KestrelException>) {
        throw KestrelException::create(kind.name, here.file, here.line, kind.description);
    } else {
        throw Exception(kind.name, here.file, here.line, kind.description, subjects...);
    }
}

} // namespace KestrelExceptions
