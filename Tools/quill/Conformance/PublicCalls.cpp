// SPDX-License-Identifier: Apache-2.0

#include "Conformance/PublicCalls.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <memory>

#include "Terminal/Text.h"

namespace QuillTool::Conformance {

using CameraInterface::Camera;
using CameraInterface::CameraState;
using CameraInterface::FrameQueueStatus;
using CameraInterface::Property;
using CameraInterface::StreamCounter;
using Imaging::IMAGE_FORMAT;

namespace {

constexpr const char* kDone = "ok";
constexpr const char* kUnknown = "No Such Thing";
constexpr std::size_t kFlashBytes = 16;

std::string answerOf(bool value) {
    return value ? "true" : "false";
}

std::string answerOf(CameraState state) {
    constexpr std::array kNames{"connected", "disconnected", "suspended"};
    return kNames.at(static_cast<std::size_t>(state));
}

std::string answerOf(FrameQueueStatus status) {
    switch (status) {
    case FrameQueueStatus::Frame:
    case FrameQueueStatus::TimedOut:
        return "runs";
    case FrameQueueStatus::Stopped:
        return "stopped";
    case FrameQueueStatus::Suspended:
        return "suspended";
    case FrameQueueStatus::CameraGone:
        return "gone";
    default:
        return "ended";
    }
}

/// Whether each captured frame counts once, whatever became of it. A stream may count one meanwhile.
bool addUp(const std::vector<StreamCounter>& counters) {
    std::uint64_t captured = 0;
    std::uint64_t sum = 0;
    for (const StreamCounter& counter : counters) {
        const bool isPart = counter.isLoss || counter.name == "Delivered" || counter.name == "Unused";
        captured += counter.name == "Captured" ? counter.value : 0;
        sum += isPart ? counter.value : 0;
    }
    return std::max(captured, sum) - std::min(captured, sum) <= 1;
}

template <typename Container>
std::string contentOf(const Container& container) {
    return container.empty() ? "empty" : kDone;
}

std::string correct(bool isCorrect) {
    return isCorrect ? kDone : "wrong";
}

std::string perform(Camera& camera, const std::string& function, std::vector<std::string> parameters) {
    camera.perform(function, parameters);
    return kDone;
}

Property& propertyOf(Subject& subject) {
    return subject.camera().getProperty(subject.property());
}

std::unique_ptr<Imaging::Image> smallImage() {
    return Imaging::createImage(2, 2, {1, 2, 3, 4}, 8, true, IMAGE_FORMAT::MONO);
}

bool hasProperty(const Subject& subject) {
    return !subject.property().empty();
}

/// Writing the mode of a USB3 Vision camera writes its flash.
bool hasHarmlessProperty(const Subject& subject) {
    return hasProperty(subject) && (subject.kind() != Kind::Usb3Vision || subject.mayWriteFlash());
}

bool hasFunction(const Subject& subject) {
    return !subject.function().empty();
}

bool canReadFlash(const Subject& subject) {
    return subject.function() == "Read Flash";
}

/// Calls a member of Camera that returns nothing.
template <auto operation>
std::string call(Subject& subject) {
    (subject.camera().*operation)();
    return kDone;
}

/// Makes a call that answers with a word.
template <auto operation>
std::string ask(Subject& subject) {
    return answerOf((subject.camera().*operation)());
}

/// Makes a call that returns a container.
template <auto operation>
std::string list(Subject& subject) {
    return contentOf((subject.camera().*operation)());
}

/// Does the same on the property.
template <auto operation>
std::string askProperty(Subject& subject) {
    return answerOf((propertyOf(subject).*operation)());
}

template <auto operation>
std::string readProperty(Subject& subject) {
    (propertyOf(subject).*operation)();
    return kDone;
}

} // namespace

std::string PublicCall::answer(Subject& subject) const {
    try {
        return make(subject);
    } catch (const KestrelExceptions::KestrelException& failure) {
        return failure.who();
    } catch (const std::exception& failure) {
        return oneLine(failure.what());
    } catch (...) {
        return "an object that is not a std::exception";
    }
}

const std::vector<PublicCall>& allPublicCalls() {
    using S = Subject;
    constexpr Scope kCamera = Scope::Camera;
    constexpr Scope kLibrary = Scope::Library;
    constexpr Effect kKeeps = Effect::Keeps;
    constexpr Effect kChanges = Effect::Changes;
    static const std::vector<PublicCall> calls{
        {"initialiseWorkspace", kLibrary, kChanges,
         [](S&) { return Camera::initialiseWorkspace(), std::string(kDone); }},
        {"unitialisedWorkpace", kLibrary, kChanges,
         [](S&) { return Camera::unitialisedWorkpace(), std::string(kDone); }},
        {"getCamerasList", kLibrary, kKeeps,
         [](S& s) {
             return std::string(Camera::getCamerasList().count(s.serialNumber()) == 0 ? "not listed" : "listed");
         }},
        {"getCamera", kLibrary, kKeeps,
         [](S& s) { return correct(&Camera::getCamera(s.serialNumber()) == &s.camera()); }},
        {"getCamera (unknown)", kLibrary, kKeeps, [](S&) { return Camera::getCamera(kUnknown), std::string(kDone); }},
        {"searchForNewCameras", kLibrary, kChanges,
         [](S&) { return std::string(Camera::searchForNewCameras() == 0 ? "none" : "some"); }},
        {"getEnumerationFailures", kLibrary, kKeeps,
         [](S&) { return Camera::getEnumerationFailures(), std::string(kDone); }},
        {"registerNewConnectCallback", kLibrary, kKeeps,
         [](S&) { return Camera::registerNewConnectCallback({}), std::string(kDone); }},
        {"registerDisconnectCallback", kLibrary, kKeeps,
         [](S&) { return Camera::registerDisconnectCallback({}), std::string(kDone); }},

        {"connect", kCamera, kChanges, call<&Camera::connect>},
        {"disconnect", kCamera, kChanges, call<&Camera::disconnect>},
        {"suspend", kCamera, kChanges, call<&Camera::suspend>},
        {"getState", kCamera, kKeeps, ask<&Camera::getState>},
        {"isConnected", kCamera, kKeeps, ask<&Camera::isConnected>},
        {"isCameraAlive", kCamera, kKeeps, ask<&Camera::isCameraAlive>},
        {"getSerialNumber", kCamera, kKeeps,
         [](S& s) { return correct(s.camera().getSerialNumber() == s.serialNumber()); }},
        {"getModelName", kCamera, kKeeps, [](S& s) { return correct(s.camera().getModelName() == s.modelName()); }},
        {"getKind", kCamera, kKeeps,
         [](S& s) { return correct(s.camera().getKind() != CameraInterface::CameraKind::Unknown); }},
        {"getCameraInfo", kCamera, kKeeps, list<&Camera::getCameraInfo>},

        {"getProperty", kCamera, kKeeps, [](S& s) { return correct(propertyOf(s).getName() == s.property()); },
         hasProperty},
        {"getProperty (unknown)", kCamera, kKeeps,
         [](S& s) { return s.camera().getProperty(kUnknown), std::string(kDone); }},
        {"isPropertySupported", kCamera, kKeeps,
         [](S& s) { return answerOf(s.camera().isPropertySupported(s.property())); }, hasProperty},
        {"isPropertySupported (unknown)", kCamera, kKeeps,
         [](S& s) { return answerOf(s.camera().isPropertySupported(kUnknown)); }},
        {"getSupportedProperties", kCamera, kKeeps, list<&Camera::getSupportedProperties>},
        {"Property::getValue", kCamera, kKeeps, readProperty<&Property::getValue>, hasProperty},
        {"Property::getMinimum", kCamera, kKeeps, readProperty<&Property::getMinimum>, hasProperty},
        {"Property::getMaximum", kCamera, kKeeps, readProperty<&Property::getMaximum>, hasProperty},
        {"Property::getDefault", kCamera, kKeeps, readProperty<&Property::getDefault>, hasProperty},
        {"Property::getUnit", kCamera, kKeeps, readProperty<&Property::getUnit>, hasProperty},
        {"Property::getIncrement", kCamera, kKeeps, readProperty<&Property::getIncrement>, hasProperty},
        {"Property::getDescription", kCamera, kKeeps, readProperty<&Property::getDescription>, hasProperty},
        {"Property::getCategory", kCamera, kKeeps, readProperty<&Property::getCategory>, hasProperty},
        {"Property::isReadOnly", kCamera, kKeeps, askProperty<&Property::isReadOnly>, hasProperty},
        {"Property::isAvailableForWriting", kCamera, kKeeps, askProperty<&Property::isAvailableForWriting>,
         hasProperty},
        {"Property::setValue (as it is)", kCamera, kKeeps,
         [](S& s) { return propertyOf(s).setValue(s.propertyValue()), std::string(kDone); }, hasHarmlessProperty},
        {"registerPropertyChangeCallback", kCamera, kKeeps,
         [](S& s) { return s.camera().registerPropertyChangeCallback([](Property&) {}), std::string(kDone); }},

        {"getFunction", kCamera, kKeeps,
         [](S& s) { return correct(s.camera().getFunction(s.function()).getName() == s.function()); }, hasFunction},
        {"getFunction (unknown)", kCamera, kKeeps,
         [](S& s) { return s.camera().getFunction(kUnknown), std::string(kDone); }},
        {"getSupportedFunctions", kCamera, kKeeps, list<&Camera::getSupportedFunctions>},
        {"perform (unknown)", kCamera, kKeeps, [](S& s) { return perform(s.camera(), kUnknown, {"0"}); }},
        {"perform (without parameters)", kCamera, kKeeps, [](S& s) { return perform(s.camera(), s.function(), {}); },
         hasFunction},
        {"perform Read Flash 0 16", kCamera, kKeeps,
         [](S& s) {
             std::vector<std::string> parameters{"0", std::to_string(kFlashBytes)};
             const std::vector<std::string> results = s.camera().perform("Read Flash", parameters);
             return correct(results.size() == 1 && results.front().size() == kFlashBytes);
         },
         canReadFlash},

        {"isStreaming", kCamera, kKeeps, ask<&Camera::isStreaming>},
        {"startStream", kCamera, kChanges, call<&Camera::startStream>},
        {"stopStream", kCamera, kChanges, call<&Camera::stopStream>},
        {"getStreamStatistics", kCamera, kKeeps,
         [](S& s) { return s.camera().getStreamStatistics().getCaptureTime(), std::string(kDone); }},
        {"getStreamCounters", kCamera, kKeeps,
         [](S& s) {
             const std::vector<StreamCounter> counters = s.camera().getStreamCounters();
             s.count(counters);
             return correct(addUp(counters));
         }},
        {"openFrameQueue", kCamera, kKeeps, [](S& s) { return answerOf(s.camera().openFrameQueue().tryPop().status); }},
        {"setFrameCallback (none)", kCamera, kKeeps,
         [](S& s) { return s.camera().setFrameCallback({}), std::string(kDone); }},
        {"getImage", kCamera, kChanges,
         [](S& s) {
             const std::unique_ptr<Imaging::Image> image = s.camera().getImage();
             return correct(image != nullptr && image->getImageSize() > 0);
         }},
        {"convertImage", kCamera, kKeeps,
         [](S& s) {
             const auto converted = s.camera().convertImage(smallImage(), IMAGE_FORMAT::RGB);
             return correct(converted != nullptr && converted->getFormat() == IMAGE_FORMAT::RGB);
         }},
        {"convertImage (no image)", kCamera, kKeeps,
         [](S& s) { return s.camera().convertImage(nullptr, IMAGE_FORMAT::RGB), std::string(kDone); }},
    };
    return calls;
}

} // namespace QuillTool::Conformance
