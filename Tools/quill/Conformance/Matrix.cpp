// SPDX-License-Identifier: Apache-2.0

#include "Conformance/Matrix.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <string>

namespace QuillTool::Conformance {

namespace {

/// The answers of a call by State.
struct Answers {
    std::array<const char*, kStateCount> byState{};

    /// Returns a copy with another answer for one state.
    constexpr Answers but(State state, const char* answer) const {
        Answers changed = *this;
        changed.byState[static_cast<std::size_t>(state)] = answer;
        return changed;
    }
    /// Returns a copy with another answer for a suspended camera, streaming or not.
    constexpr Answers butSuspended(const char* answer) const {
        return but(State::Suspended, answer).but(State::SuspendedStreaming, answer);
    }
};

constexpr Answers always(const char* answer) {
    Answers answers;
    for (const char*& each : answers.byState) {
        each = answer;
    }
    return answers;
}

/// For calls on properties and functions, which exist from the first connection on.
constexpr Answers sinceConnected(const char* before, const char* after) {
    return always(after).but(State::NeverConnected, before);
}

/// For calls that need an open camera; a suspended camera stays open.
constexpr Answers whileOpen(const char* before, const char* open, const char* closed) {
    return sinceConnected(before, open)
        .but(State::Disconnected, closed)
        .but(State::Unplugged, closed)
        .but(State::UnpluggedStreaming, closed)
        .but(State::Retired, closed);
}

constexpr unsigned bit(Kind kind) {
    return static_cast<unsigned>(kind);
}

constexpr unsigned kSdk = bit(Kind::Sdk);
constexpr unsigned kSdkWithoutStream = bit(Kind::SdkWithoutStream);
constexpr unsigned kUsb3Vision = bit(Kind::Usb3Vision);
constexpr unsigned kSimulated = bit(Kind::Simulated);
constexpr unsigned kGenICam = bit(Kind::GenICam);
constexpr unsigned kAnySdk = kSdk | kSdkWithoutStream;
constexpr unsigned kStreaming = kSdk | kGenICam;
constexpr unsigned kAnyStream = kAnySdk | kGenICam;
constexpr unsigned kHardware = kAnyStream | kUsb3Vision;
constexpr unsigned kStreamless = kUsb3Vision | kSimulated;
constexpr unsigned kEvery = kHardware | kSimulated;

struct Row {
    std::string_view call;
    unsigned kinds;
    Answers answers;
};

constexpr const char* kOk = "ok";
constexpr const char* kEither = "true|false";
constexpr const char* kNoProperty = "PropertyUnsupported";
constexpr const char* kNoFunction = "FunctionUnsupported";
constexpr const char* kUnreadable = "PropertyReadFailure";
constexpr const char* kNoSettings = "InvalidStreamSettings";

constexpr Answers kSuspend = always(kOk)
                                 .but(State::NeverConnected, "CameraState")
                                 .butSuspended("CameraState")
                                 .but(State::Disconnected, "CameraState")
                                 .but(State::UnpluggedStreaming, "StopStream");

constexpr Answers kConnected =
    always("true").but(State::NeverConnected, "false").butSuspended("false").but(State::Disconnected, "false");

constexpr Answers kState = always("connected")
                               .but(State::NeverConnected, "disconnected")
                               .butSuspended("suspended")
                               .but(State::Disconnected, "disconnected");

constexpr Answers kQueue = always("stopped").butSuspended("suspended").but(State::Retired, "gone");

/// Hardware retires while connected, a simulated camera only while disconnected.
constexpr Answers whenRetired(const Answers& answers, const char* answer) {
    return answers.but(State::Retired, answer);
}

constexpr Row kRows[] = {
    // call, kinds, answers
    {"initialiseWorkspace", kEvery, always(kOk)},
    {"unitialisedWorkpace", kEvery, always(kOk)},
    {"getCamerasList", kEvery, always("listed").but(State::Retired, "not listed").but(State::Ended, "not listed")},
    {"getCamera", kEvery, always(kOk).but(State::Retired, "CameraNotFound").but(State::Ended, "CameraNotFound")},
    {"getCamera (unknown)", kEvery, always("CameraNotFound")},
    {"searchForNewCameras", kEvery, always("none").but(State::Ended, "some")},
    {"getEnumerationFailures", kEvery, always(kOk)},
    {"registerNewConnectCallback", kEvery, always(kOk)},
    {"registerDisconnectCallback", kEvery, always(kOk)},

    {"connect", kEvery, always(kOk).but(State::Retired, "CameraConnection")},
    {"disconnect", kEvery, always(kOk).butSuspended("CameraState").but(State::UnpluggedStreaming, "StopStream")},
    {"suspend", kSimulated, whenRetired(kSuspend, "CameraState")},
    {"suspend", kHardware, kSuspend},
    {"getState", kSimulated, whenRetired(kState, "disconnected")},
    {"getState", kHardware, kState},
    {"isConnected", kSimulated, whenRetired(kConnected, "false")},
    {"isConnected", kHardware, kConnected},
    {"isCameraAlive", kSimulated, always("true")},
    {"isCameraAlive", kHardware, whileOpen("false", "true", "false")},
    {"getSerialNumber", kEvery, always(kOk)},
    {"getModelName", kEvery, always(kOk)},
    {"getKind", kEvery, always(kOk)},
    {"getCameraInfo", kSimulated, sinceConnected("empty", "ok|empty")}, // depends on the list of cameras
    {"getCameraInfo", kHardware, sinceConnected("empty", kOk)},

    {"getProperty", kEvery, sinceConnected(kNoProperty, kOk)},
    {"getProperty (unknown)", kEvery, always(kNoProperty)},
    {"isPropertySupported", kEvery, sinceConnected("false", "true")},
    {"isPropertySupported (unknown)", kEvery, always("false")},
    {"getSupportedProperties", kSimulated, sinceConnected("empty", "ok|empty")},
    {"getSupportedProperties", kHardware, sinceConnected("empty", kOk)},
    {"Property::getValue", kStreaming | kUsb3Vision, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::getMinimum", kSdk, whileOpen(kNoProperty, kOk, "PropertyRangeReadFailure")},
    {"Property::getMaximum", kSdk, whileOpen(kNoProperty, kOk, "PropertyRangeReadFailure")},
    {"Property::getDefault", kSdk, whileOpen(kNoProperty, kOk, "PropertyRangeReadFailure")},
    {"Property::isReadOnly", kSdk, whileOpen(kNoProperty, kEither, "PropertyErrorUnknown")},
    {"Property::isAvailableForWriting", kSdk, whileOpen(kNoProperty, kEither, "PropertyErrorUnknown")},
    {"Property::isAvailableForWriting", kUsb3Vision, whileOpen(kNoProperty, kEither, kUnreadable)},
    {"Property::setValue (as it is)", kSdk, whileOpen(kNoProperty, kOk, "PropertyErrorUnknown")},
    {"Property::setValue (as it is)", kUsb3Vision, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::getMinimum", kGenICam, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::getMaximum", kGenICam, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::getDefault", kGenICam, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::getIncrement", kGenICam, whileOpen(kNoProperty, kOk, kUnreadable)},
    {"Property::isReadOnly", kGenICam, whileOpen(kNoProperty, kEither, kUnreadable)},
    {"Property::isAvailableForWriting", kGenICam, whileOpen(kNoProperty, kEither, kUnreadable)},
    {"Property::setValue (as it is)", kGenICam, whileOpen(kNoProperty, kOk, kUnreadable)},
    // Data in memory is available without the camera.
    {"Property::getValue", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getMinimum", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getMaximum", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getDefault", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getUnit", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getIncrement", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getDescription", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::getCategory", kEvery, sinceConnected(kNoProperty, kOk)},
    {"Property::isReadOnly", kEvery, sinceConnected(kNoProperty, kEither)},
    {"Property::isAvailableForWriting", kEvery, sinceConnected(kNoProperty, kEither)},
    {"Property::setValue (as it is)", kEvery, sinceConnected(kNoProperty, kOk)},
    {"registerPropertyChangeCallback", kEvery, always(kOk)},

    {"getFunction", kEvery, sinceConnected(kNoFunction, kOk)},
    {"getFunction (unknown)", kEvery, always(kNoFunction)},
    {"getSupportedFunctions", kSimulated, sinceConnected("empty", "ok|empty")},
    {"getSupportedFunctions", kHardware, sinceConnected("empty", kOk)},
    {"perform (unknown)", kEvery, always(kNoFunction)},
    {"perform (without parameters)", kEvery, sinceConnected(kNoFunction, "ArgumentEmpty")},
    {"perform Read Flash 0 16", kSimulated, sinceConnected(kNoFunction, kOk)},
    {"perform Read Flash 0 16", kHardware, whileOpen(kNoFunction, kOk, "FunctionExecution")},

    {"isStreaming", kEvery,
     always("false")
         .but(State::StreamingVideo, "true")
         .but(State::StreamingStill, "true")
         .but(State::SuspendedStreaming, "true")
         .but(State::UnpluggedStreaming, "true")}, // until it is stopped
    {"startStream", kStreaming, whileOpen(kNoSettings, kOk, kNoSettings).but(State::UnpluggedStreaming, kOk)},
    {"startStream", kSdkWithoutStream, always(kNoSettings)},
    {"stopStream", kAnyStream, always(kOk).but(State::UnpluggedStreaming, "StopStream")},
    {"getStreamStatistics", kAnyStream, always(kOk)},
    {"getStreamCounters", kAnyStream, always(kOk)},
    {"openFrameQueue", kStreaming,
     kQueue.but(State::StreamingVideo, "runs")
         .but(State::StreamingStill, "runs")
         .but(State::SuspendedStreaming, "runs")
         .but(State::UnpluggedStreaming, kUnreadable)},
    {"openFrameQueue", kSdkWithoutStream, kQueue},
    {"setFrameCallback (none)", kEvery, always(kOk)},
    {"startStream", kStreamless, always("StreamUnsupported")},
    {"stopStream", kStreamless, always("StreamUnsupported")},
    {"getStreamStatistics", kStreamless, always("StreamUnsupported")},
    {"getStreamCounters", kStreamless, always("StreamUnsupported")},
    {"openFrameQueue", kStreamless, always("StreamUnsupported")},
    {"getImage", kStreaming,
     whileOpen(kNoSettings, kOk, kNoSettings)
         .but(State::UnpluggedStreaming, "PropertyReadFailure|StreamStopped|StreamTimeout")},
    {"getImage", kSdkWithoutStream, always(kNoSettings)},
    {"getImage", kUsb3Vision, always("Method not implemented.")},
    {"getImage", kSimulated, always(kOk)},
    {"convertImage", kSdk, whileOpen(kNoProperty, kOk, kUnreadable)}, // reads the layout of the sensor
    {"convertImage", kSdkWithoutStream, sinceConnected(kNoProperty, "ok|PropertyUnsupported|PropertyReadFailure")},
    {"convertImage", kStreamless | kGenICam, always(kOk)},
    {"convertImage (no image)", kEvery, always("Image cannot be null.")},
};

} // namespace

std::string_view documentedAnswer(const PublicCall& call, Kind kind, State state) {
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& candidate) {
        return candidate.call == call.name && (candidate.kinds & bit(kind)) != 0;
    });
    if (row == std::end(kRows)) {
        throw std::logic_error(std::string("The matrix has no row of ") + call.name);
    }
    return row->answers.byState[static_cast<std::size_t>(state)];
}

bool allows(std::string_view documented, std::string_view answer) {
    for (std::size_t begin = 0; begin <= documented.size();) {
        const std::size_t end = std::min(documented.find('|', begin), documented.size());
        if (documented.substr(begin, end - begin) == answer) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

bool isPossible(const PublicCall& call, const StateDescription& state, const Subject& subject) {
    const bool hasWhatItActsOn = call.scope == Scope::Library || state.state != State::Ended;
    return hasWhatItActsOn && state.isPossible(subject) && (call.isPossible == nullptr || call.isPossible(subject));
}

} // namespace QuillTool::Conformance
