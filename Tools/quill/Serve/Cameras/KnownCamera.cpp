// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/KnownCamera.h"

#include <utility>

#include "Serve/Cameras/Refusal.h"

namespace QuillTool::Serve {

using CameraInterface::Camera;
using Utilities::MutexLock;

namespace {

/// Viewers see the newest frame; one more may arrive while it is encoded.
const CameraInterface::FrameQueueSettings kNewest{2, CameraInterface::WhenFull::DropOldest, kViewersQueue};

} // namespace

KnownCamera::KnownCamera(std::string serialNumber)
    : m_SerialNumber(std::move(serialNumber)), m_Feed(std::make_shared<LiveFeed>([this] { return openQueue(); })) {}

void KnownCamera::requireConnected(const SelectedCamera& camera) {
    if (camera->isConnected()) {
        return;
    }
    const bool isSuspended = camera->getState() == CameraInterface::CameraState::Suspended;
    throw Refusal(409, "NotConnected", camera.about(isSuspended ? "it is suspended" : "it is not connected"),
                  "Connect the camera first.");
}

CameraInterface::FrameQueue KnownCamera::openQueue() {
    try {
        return useConnected([](const SelectedCamera& camera) { return camera->openFrameQueue(kNewest); });
    } catch (const std::exception& failure) {
        throw refusalOf(failure);
    }
}

std::shared_ptr<KnownCamera> KnownCameras::find(const std::string& serialNumber) {
    const MutexLock lock(m_Mutex);
    const auto known = m_Cameras.find(serialNumber);
    if (known != m_Cameras.end()) {
        return known->second;
    }
    Camera::getCamera(serialNumber); // refuses names of no camera, which clients may send without end
    return m_Cameras.emplace(serialNumber, std::make_shared<KnownCamera>(serialNumber)).first->second;
}

std::vector<std::shared_ptr<KnownCamera>> KnownCameras::all() {
    const MutexLock lock(m_Mutex);
    std::vector<std::shared_ptr<KnownCamera>> cameras;
    for (const auto& known : m_Cameras) {
        cameras.push_back(known.second);
    }
    return cameras;
}

bool KnownCameras::isStreaming(const std::string& serialNumber) {
    const MutexLock lock(m_Mutex);
    const auto known = m_Cameras.find(serialNumber);
    return known != m_Cameras.end() && known->second->isStreaming();
}

} // namespace QuillTool::Serve
