// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Refusal.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

#include <Quill.h>

#include "Terminal/ToolError.h"

namespace QuillTool::Serve {

namespace {

constexpr int kNotFound = 404;
constexpr int kConflict = 409;
constexpr int kGone = 410;
constexpr int kUnprocessable = 422;
constexpr int kBadGateway = 502; // the camera, to which this server is a gateway, fails
constexpr int kUnavailable = 503;
constexpr int kGatewayTimeout = 504;

/// The status and the advice for a failure that the library names so.
struct KnownFailure {
    std::string_view name;
    int status;
    const char* advice;
};

constexpr KnownFailure kKnownFailures[] = {
    {"CameraNotFound", kNotFound, "See the list of cameras."},
    {"PropertyUnsupported", kNotFound, "See the list of the camera's properties."},
    {"CameraConnection", kConflict, "See that no other program uses the camera, and that it is plugged in."},
    {"CameraState", kConflict, "A suspended camera can only be connected."},
    {"StreamUnsupported", kConflict, "This kind of camera has no stream; choose another camera."},
    {"StartStream", kConflict, "Look at the region and the pixel format; another program may use the camera."},
    {"StreamStopped", kConflict, "Start the stream again."},
    {"StreamTimeout", kGatewayTimeout, "Look at the trigger and the exposure, then try again."},
    {"SettingsInvalid", kUnprocessable, "Send a document that was saved from a camera."},
    {"SettingsModel", kConflict, "The settings come from another model: compare them, and set by hand what fits."},
    {"PropertyValueConversion", kUnprocessable, ""},
    {"ArgumentUnhandled", kUnprocessable, ""},
};

Refusal refusalOfTool(const ToolError& failure) {
    switch (failure.code()) {
    case ExitCode::Usage:
        return {kUnprocessable, "InvalidValue", failure.what()};
    case ExitCode::NotFound:
        return {kNotFound, "NotFound", failure.what(), "See the lists of cameras and properties."};
    case ExitCode::TimedOut:
        return {kGatewayTimeout, "TimedOut", failure.what(), "Look at the trigger and the exposure, then try again."};
    case ExitCode::CameraGone:
        return {kGone, "CameraGone", failure.what(), "Plug the camera in again."};
    default:
        return {kConflict, "CameraRefused", failure.what()};
    }
}

} // namespace

Refusal refusalOf(const std::exception& failure) {
    if (const auto* refusal = dynamic_cast<const Refusal*>(&failure)) {
        return *refusal;
    }
    if (const auto* error = dynamic_cast<const ToolError*>(&failure)) {
        return refusalOfTool(*error);
    }
    if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) {
        return {kUnavailable, "OutOfMemory", "The server has no memory for this.", "Try again with fewer frames."};
    }
    const auto* known = dynamic_cast<const KestrelExceptions::KestrelException*>(&failure);
    if (known == nullptr) {
        return {kBadGateway, "CameraFailed", reasonOf(failure)};
    }
    const auto row = std::find_if(std::begin(kKnownFailures), std::end(kKnownFailures),
                                  [&](const KnownFailure& candidate) { return candidate.name == known->who(); });
    return row == std::end(kKnownFailures) ? Refusal(kBadGateway, known->who(), reasonOf(failure))
                                           : Refusal(row->status, known->who(), reasonOf(failure), row->advice);
}

} // namespace QuillTool::Serve
