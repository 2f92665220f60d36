// SPDX-License-Identifier: Apache-2.0

#include "Camera/CameraChanges.h"

#include <utility>

namespace QuillTool {

using CameraInterface::Camera;

CameraChanges::CameraChanges() {
    Camera::registerDisconnectCallback([this](const std::string& modelName, const std::string& serialNumber) {
        {
            const Utilities::MutexLock lock(m_Mutex);
            m_Departures.push_back({modelName, serialNumber});
        }
        m_Waker.wake();
    });
    Camera::registerNewConnectCallback([this] { m_Waker.wake(); });
}

CameraChanges::~CameraChanges() {
    Camera::registerNewConnectCallback({});
    Camera::registerDisconnectCallback({});
}

std::vector<Departure> CameraChanges::takeDepartures() {
    m_Waker.drain();
    const Utilities::MutexLock lock(m_Mutex);
    return std::exchange(m_Departures, {});
}

} // namespace QuillTool
