// SPDX-License-Identifier: Apache-2.0

#include "Conformance/States.h"

#include <algorithm>
#include <chrono>

#include "Camera/CameraChanges.h"
#include "Terminal/ToolError.h"

namespace QuillTool::Conformance {

using CameraInterface::Camera;
namespace PropertyNames = CameraInterface::PropertyNames;

namespace {

using Clock = std::chrono::steady_clock;

/// A generous limit: the library enumerates every half second.
constexpr std::chrono::seconds kDepartureTime{10};

void connect(Subject& subject) {
    subject.camera().connect();
}

void stream(Subject& subject, const char* mode) {
    connect(subject);
    subject.camera().getProperty(PropertyNames::kStreamingMode).setValue(mode);
    subject.camera().startStream();
}

void streamVideo(Subject& subject) {
    stream(subject, "Video");
}

void connectOrStream(Subject& subject) {
    subject.kind() == Kind::Sdk || subject.kind() == Kind::GenICam ? streamVideo(subject) : connect(subject);
}

void awaitRetirement(Subject& subject) {
    CameraChanges changes;
    Camera::initialiseWorkspace(); // starts watching
    const Clock::time_point deadline = Clock::now() + kDepartureTime;
    while (Camera::getCamerasList().count(subject.serialNumber()) != 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            throw ToolError(ExitCode::TimedOut, "the library did not notice that the camera left");
        }
        waitForAny({&changes.waker()}, left);
        changes.takeDepartures();
    }
}

constexpr std::array<StateDescription, kStateCount> kStates{{
    {State::NeverConnected, "new", false, false, [](Subject&) {}},
    {State::Connected, "connected", false, false, connect},
    {State::StreamingVideo, "video", true, false, streamVideo},
    {State::StreamingStill, "still", true, false, [](Subject& subject) { stream(subject, "Still"); }},
    {State::Suspended, "suspended", false, false,
     [](Subject& subject) {
         connect(subject);
         subject.camera().suspend();
     }},
    {State::SuspendedStreaming, "suspended video", true, false,
     [](Subject& subject) {
         streamVideo(subject);
         subject.camera().suspend(); // ends the stream
         subject.camera().startStream();
     }},
    {State::Disconnected, "disconnected", false, false,
     [](Subject& subject) {
         connect(subject);
         subject.camera().disconnect();
     }},
    {State::Unplugged, "unplugged", false, true,
     [](Subject& subject) {
         connect(subject);
         subject.plug().pull();
     }},
    {State::UnpluggedStreaming, "unplugged video", true, true,
     [](Subject& subject) {
         streamVideo(subject);
         subject.plug().pull();
     }},
    {State::Retired, "retired", false, true,
     [](Subject& subject) {
         connectOrStream(subject);
         subject.plug().pull();
         if (subject.camera().isCameraAlive()) {
             subject.camera().disconnect(); // a simulated camera works as long as it is connected
         }
         awaitRetirement(subject);
     }},
    {State::Ended, "ended", false, false,
     [](Subject& subject) {
         connectOrStream(subject);
         Camera::unitialisedWorkpace();
     }},
}};

constexpr bool isInOrder() {
    for (std::size_t index = 0; index < kStateCount; ++index) {
        if (kStates[index].state != static_cast<State>(index)) {
            return false;
        }
    }
    return true;
}
static_assert(isInOrder());

} // namespace

bool StateDescription::isPossible(const Subject& subject) const {
    const bool canStream =
        subject.kind() == Kind::Sdk || (subject.kind() == Kind::GenICam && state != State::StreamingStill);
    return (!needsStream || canStream) && (!needsPlug || subject.plug().pull);
}

const std::array<StateDescription, kStateCount>& allStates() {
    return kStates;
}

} // namespace QuillTool::Conformance
