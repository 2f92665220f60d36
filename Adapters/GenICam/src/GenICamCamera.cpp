// SPDX-License-Identifier: Apache-2.0

#include "GenICamCamera.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Cameras/CameraInfo.h"
#include "Exceptions/Raise.h"
#include "FeatureProperties.h"
#include "GenICamCommand.h"
#include "GenICamStream.h"
#include "Process.h"
#include "StandardProperties.h"

namespace GenICamAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

GenICamCamera::GenICamCamera(const FoundCamera& found)
    : Camera(CameraKind::GenICam), m_SerialNumber(found.serialNumber), m_ModelName(found.record.model),
      m_IsOnNetwork(found.usbId.empty()) {
    m_Stream = std::make_unique<GenICamStream>(*this);
}

GenICamCamera::~GenICamCamera() {
    m_Stream->forceStop();
    registerPropertyChangeCallback({});
    setDevice(nullptr);
}

std::vector<std::unique_ptr<Camera>> GenICamCamera::getListOfCameras(const GenICam::Settings& settings) {
    std::vector<std::unique_ptr<Camera>> cameras;
    for (const FoundCamera& found : Process::instance().discovery().cameras(settings)) {
        cameras.push_back(std::make_unique<GenICamCamera>(found));
    }
    return cameras;
}

std::shared_ptr<Device> GenICamCamera::device() const {
    const MutexLock lock(m_DeviceMutex);
    return m_Device;
}

void GenICamCamera::setDevice(std::shared_ptr<Device> device) {
    {
        const MutexLock lock(m_DeviceMutex);
        m_Device.swap(device);
    }
    if (device) {
        device->close(); // another thread may ask it for a sign of life for a moment longer
    }
}

void GenICamCamera::closeForGood() {
    setDevice(nullptr);
}

Property* GenICamCamera::findProperty(const std::string& name) {
    const auto entry = m_Properties.find(name);
    return entry == m_Properties.end() ? nullptr : entry->second.get();
}

std::unique_ptr<Imaging::Image> GenICamCamera::getImage() {
    const bool wasStreaming = isStreaming();
    if (!wasStreaming) {
        startStream();
    }
    auto& stream = static_cast<GenICamStream&>(*m_Stream);
    try {
        auto image = stream.takeImage();
        if (!wasStreaming) {
            stopStream();
        }
        return image;
    } catch (...) {
        if (!wasStreaming) {
            stream.forceStop(); // the reason why there is no image matters more than what the stop says
        }
        throw;
    }
}

std::map<std::string, std::string> GenICamCamera::getCameraInfo() {
    return collectCameraInfo(*this);
}

std::string GenICamCamera::getSerialNumber() {
    return m_SerialNumber;
}

std::string GenICamCamera::getModelName() {
    return m_ModelName;
}

bool GenICamCamera::isCameraAlive() {
    const std::shared_ptr<Device> open = device();
    const auto asked = std::chrono::steady_clock::now();
    if (!open || open->isAlive()) {
        return open != nullptr;
    }
    // One that is busy with frames may fail to answer.
    return !open->hasLostControl() && static_cast<GenICamStream&>(*m_Stream).hasReceivedSince(asked);
}

void GenICamCamera::open() {
    const GenICam::Settings settings = GenICam::getSettings();
    const std::vector<FoundCamera> present = Process::instance().discovery().cameras(settings);
    const auto place = std::find_if(present.begin(), present.end(), [this](const FoundCamera& camera) {
        return camera.serialNumber == m_SerialNumber;
    });
    if (place == present.end()) {
        refuseConnection(QUILL_HERE);
    }
    try {
        setDevice(Device::open(*place, settings.heartbeatMs)); // its address may have changed
    } catch (const std::exception& failure) {
        refuseConnection(QUILL_HERE, failure.what());
    }
}

void GenICamCamera::connect() {
    if (isConnected() && !isRetired()) {
        return;
    }
    requireTransition(CameraState::Connected, QUILL_HERE);
    m_Stream->forceStop(); // a stream started on a suspended camera uses its device
    setDevice(nullptr);
    open();
    if (isRetired()) {
        setDevice(nullptr);
        refuseConnection(QUILL_HERE);
    }
    try {
        buildProperties();
        buildFunctions();
    } catch (const std::exception& failure) {
        setDevice(nullptr);
        refuseConnection(QUILL_HERE, failure.what());
    }
    m_State = CameraState::Connected;
    expectStreamEnd(FrameQueueStatus::Stopped); // no longer "suspended"
}

void GenICamCamera::disconnect() {
    if (!device()) {
        return;
    }
    requireTransition(CameraState::Disconnected, QUILL_HERE);
    if (isStreaming()) {
        stopStream();
    }
    const Closing closing(*this);
    setDevice(nullptr);
    m_State = CameraState::Disconnected;
}

void GenICamCamera::suspend() {
    requireTransition(CameraState::Suspended, QUILL_HERE);
    if (isStreaming()) {
        m_Stream->stopStream(); // queues get "suspended" as the reason, not "stopped"
    }
    m_State = CameraState::Suspended;
}

void GenICamCamera::buildProperties() {
    m_Features = describeFeatures(device()->get());
    for (const FeatureDescription& feature : m_Features) {
        if (feature.kind != FeatureKind::Command && findProperty(feature.name) == nullptr) {
            m_Properties.emplace(feature.name, makeFeatureProperty(*this, feature));
        }
    }
    addStandardProperties(*this, m_Properties);
    linkFeatures(m_Features, m_Properties);
    updatePropertyChangeCallback();
    for (const char* name : {"PixelFormat", "ExposureTime", "ExposureTimeAbs", "Gain", "GainAbs", "GainRaw"}) {
        describeFramesAfterChangeOf(name);
    }
}

void GenICamCamera::buildFunctions() {
    for (const FeatureDescription& feature : m_Features) {
        if (feature.kind == FeatureKind::Command && m_Functions.count(feature.name) == 0) {
            m_Functions.emplace(feature.name, std::make_unique<GenICamCommand>(*this, feature.name));
        }
    }
}

} // namespace GenICamAdapter
