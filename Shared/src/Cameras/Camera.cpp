// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Camera.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "Exceptions/Raise.h"
#include "Properties/PropertyMetadata.h"
#include "Streams/FrameDispatcher.h"
#include "Streams/FrameHub.h"

namespace CameraInterface {

using namespace KestrelExceptions;

namespace {

template <typename Table>
std::vector<std::string> namesOf(const Table& table) {
    std::vector<std::string> names;
    names.reserve(table.size());
    for (const auto& entry : table) {
        names.push_back(entry.second->getName());
    }
    return names;
}

} // namespace

Camera::Camera(CameraKind kind) : m_Kind(kind) {}

Camera::~Camera() {
    setFrameDispatcher(nullptr);
    registerPropertyChangeCallback({});
}

bool Camera::isStreaming() {
    return m_Stream && m_Stream->isStreaming();
}

void Camera::startStream() {
    requireStream().startStream();
}

void Camera::stopStream() {
    if (isStreaming()) {
        expectStreamEnd(FrameQueueStatus::Stopped);
    }
    requireStream().stopStream();
}

StreamStatistics& Camera::getStreamStatistics() {
    return requireStream().getStreamStatistics();
}

Stream& Camera::requireStream() {
    if (!m_Stream) {
        raise<KestrelException>(QUILL_HERE, Errors::kStreamUnsupported);
    }
    return *m_Stream;
}

FrameQueue Camera::openFrameQueue(const FrameQueueSettings& settings) {
    Stream& stream = requireStream();
    if (settings.capacity < 1 || settings.capacity > kMaximumQueueCapacity) {
        raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, "capacity");
    }
    stream.describeFrames(); // the first frame may come at once
    FrameQueue queue = stream.m_Frames->openQueue(settings);
    if (!stream.m_Frames->isDescribed()) { // another thread has started the stream meanwhile
        stream.describeFrames();
    }
    return queue;
}

void Camera::setFrameCallback(std::function<void(const Frame&)> callback, const FrameQueueSettings& settings) {
    FrameDispatcher::refuseOnItsThread();
    std::optional<FrameQueue> queue;
    if (callback) {
        queue = openFrameQueue(settings);
    }
    setFrameDispatcher(nullptr);
    if (queue) {
        setFrameDispatcher(std::make_unique<FrameDispatcher>(std::move(*queue), std::move(callback)));
    }
}

void Camera::setFrameDispatcher(std::unique_ptr<FrameDispatcher> dispatcher) {
    const Utilities::MutexLock lock(m_FrameDispatcherMutex);
    m_FrameDispatcher.swap(dispatcher);
}

std::vector<StreamCounter> Camera::getStreamCounters() {
    return requireStream().m_Frames->counters();
}

void Camera::expectStreamEnd(FrameQueueStatus reason) {
    if (m_Stream) {
        m_Stream->m_Frames->expectEnd(reason);
    }
}

void Camera::stopForGood() noexcept {
    if (m_Stream) {
        m_Stream->m_Frames->retire();
        m_Stream->forceStop();
    }
    setFrameDispatcher(nullptr);
}

std::unique_ptr<Imaging::Image> Camera::convertImage(const std::unique_ptr<Imaging::Image>& image,
                                                     Imaging::IMAGE_FORMAT format) {
    return Imaging::convertImage(image, format);
}

CameraState Camera::getState() {
    return m_State;
}

bool Camera::isConnected() const {
    return m_State == CameraState::Connected;
}

Property& Camera::getProperty(const std::string& name) {
    const auto entry = m_Properties.find(name);
    if (entry == m_Properties.end()) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, name);
    }
    return *entry->second;
}

bool Camera::isPropertySupported(const std::string& name) {
    return m_Properties.count(name) != 0;
}

std::vector<std::string> Camera::getSupportedProperties() {
    return namesOf(m_Properties);
}

Function& Camera::getFunction(std::string name) { // NOLINT(performance-unnecessary-value-param): the interface's own
    const auto entry = m_Functions.find(name);
    if (entry == m_Functions.end()) {
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionUnsupported, name);
    }
    return *entry->second;
}

std::vector<std::string> Camera::getSupportedFunctions() {
    return namesOf(m_Functions);
}

std::vector<std::string> Camera::perform(const std::string& name, std::vector<std::string>& parameters) {
    return getFunction(name).perform(parameters);
}

void Camera::registerPropertyChangeCallback(std::function<void(Property&)> callback) {
    m_PropertyChangeCallback.swap(callback); // the former callback is destroyed once no property has it
    updatePropertyChangeCallback();
}

void Camera::updatePropertyChangeCallback() {
    for (const auto& entry : m_Properties) {
        entry.second->registerOnChangeCallback(m_PropertyChangeCallback);
    }
}

void Camera::connectIncrements() {
    for (const PropertyMetadata& row : getPropertiesWithIncrement()) {
        const auto property = m_Properties.find(std::string(row.name));
        const auto holder = m_Properties.find(row.incrementProperty);
        if (property != m_Properties.end() && holder != m_Properties.end()) {
            property->second->m_IncrementProperty = holder->second.get();
        }
    }
}

void Camera::describeFramesAfterChangeOf(const std::string& propertyName) {
    const auto entry = m_Properties.find(propertyName);
    if (entry != m_Properties.end()) {
        entry->second->m_Observer = [this] {
            if (!m_Stream || !m_Stream->m_Frames->hasQueues()) {
                return;
            }
            try {
                m_Stream->describeFrames();
            } catch (const std::exception&) {
                // The property itself was written; frames keep their former description.
            }
        };
    }
}

std::string Camera::getStateString(CameraState state) {
    switch (state) {
    case CameraState::Connected:
        return "connected";
    case CameraState::Disconnected:
        return "disconnected";
    case CameraState::Suspended:
        return "suspended";
    }
    return "";
}

bool Camera::validateState(CameraState target) const {
    switch (target) {
    case CameraState::Connected:
        return m_State == CameraState::Disconnected || m_State == CameraState::Suspended;
    case CameraState::Disconnected:
    case CameraState::Suspended:
        return m_State == CameraState::Connected;
    }
    return false;
}

bool Camera::isRetired() const {
    return m_Retired;
}

void Camera::requireTransition(CameraState target, const SourceLocation& here) {
    if (target == CameraState::Connected) {
        m_ResumptionFailed = false;
        if (m_Retired) {
            refuseConnection(here);
        }
    }
    if (!validateState(target)) {
        raise<KestrelException_CameraState>(here, Errors::kCameraState, getStateString(m_State),
                                            getStateString(target));
    }
    if (target == CameraState::Suspended) {
        expectStreamEnd(FrameQueueStatus::Suspended);
    }
}

void Camera::refuseConnection(const SourceLocation& here, const std::string& reason) {
    m_ResumptionFailed = m_State == CameraState::Suspended;
    const std::string description = Errors::kCameraConnection.description + (reason.empty() ? reason : " " + reason);
    throw KestrelException_Camera(Errors::kCameraConnection.name, here.file, here.line, description, getSerialNumber());
}

void Camera::endFailedResumption() {
    CameraState state = CameraState::Suspended;
    if (m_ResumptionFailed && m_State.compare_exchange_strong(state, CameraState::Disconnected)) {
        m_ResumptionFailed = false;
    }
}

} // namespace CameraInterface
