// SPDX-License-Identifier: Apache-2.0

#include "CameraUse.h"

#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace QuillGStreamer {

using CameraInterface::Camera;
using Utilities::Mutex;
using Utilities::MutexLock;

/// What the elements of the process did to a camera.
class SharedCamera {
public:
    explicit SharedCamera(Camera& camera) : m_Camera(camera) {}

    /// Returns the camera, which is destroyed once it has left the list and the workspace has ended.
    /// @throws NoSuchCamera  it has left the list
    Camera& listed(const std::string& serialNumber) const {
        try {
            if (&Camera::getCamera(serialNumber) == &m_Camera) {
                return m_Camera;
            }
        } catch (const std::exception&) {
            // Nor is another camera of this serial number there.
        }
        throw NoSuchCamera("Camera " + serialNumber + " is gone.");
    }

    void join() {
        const MutexLock lock(mutex);
        if (!m_Camera.isConnected()) {
            m_Camera.connect();
            m_ConnectedHere = true;
        }
        ++m_Users;
    }

    void startStream(const std::string& serialNumber) {
        const MutexLock lock(mutex);
        Camera& camera = listed(serialNumber);
        if (!camera.isStreaming()) {
            camera.startStream();
            m_StartedHere = true;
        }
    }

    void leave(const std::string& serialNumber) {
        const MutexLock lock(mutex);
        if (--m_Users != 0) {
            return;
        }
        const bool stops = std::exchange(m_StartedHere, false);
        const bool disconnects = std::exchange(m_ConnectedHere, false);
        Camera& camera = listed(serialNumber);
        if (stops) {
            camera.stopStream();
        }
        if (disconnects) {
            camera.disconnect();
        }
    }

    bool mayRestart(const std::string& serialNumber) {
        const MutexLock lock(mutex);
        return !listed(serialNumber).isStreaming() || (m_StartedHere && m_Users == 1);
    }

    Mutex mutex; // guards what follows, and that one element at a time uses the camera

private:
    Camera& m_Camera;
    unsigned m_Users QUILL_GUARDED_BY(mutex) = 0;
    bool m_ConnectedHere QUILL_GUARDED_BY(mutex) = false;
    bool m_StartedHere QUILL_GUARDED_BY(mutex) = false;
};

namespace {

void watchCameras() {
    try {
        Camera::initialiseWorkspace();
    } catch (const KestrelExceptions::KestrelException& failure) {
        // In a callback of the library, which watches already.
        if (std::string_view(failure.who()) != "WouldWaitForItself") {
            throw;
        }
    }
}

bool hasStream(const std::string& serialNumber) {
    try {
        Camera::getCamera(serialNumber).getStreamStatistics();
        return true;
    } catch (const std::exception&) {
        return false; // it has none, or has left the list meanwhile
    }
}

/// Returns a listed camera, or null.
Camera* findListed(const std::string& serialNumber) {
    try {
        if (!serialNumber.empty()) {
            return &Camera::getCamera(serialNumber);
        }
        const std::vector<ListedCamera> cameras = listStreamingCameras();
        return cameras.empty() ? nullptr : &Camera::getCamera(cameras.front().serialNumber);
    } catch (const std::exception&) {
        return nullptr;
    }
}

[[noreturn]] void refuse(const std::string& serialNumber) {
    std::string there;
    for (const ListedCamera& camera : listStreamingCameras()) {
        there += (there.empty() ? "" : ", ") + camera.serialNumber;
    }
    throw NoSuchCamera(serialNumber.empty() ? "There is no camera that has a stream."
                       : there.empty()      ? "There is no camera " + serialNumber + ", nor any other."
                                            : "There is no camera " + serialNumber + "; there are: " + there + ".");
}

Camera& findCamera(const std::string& serialNumber) {
    Camera* camera = findListed(serialNumber);
    if (camera == nullptr) {
        watchCameras(); // it may have just arrived, or the application has ended the workspace
        camera = findListed(serialNumber);
    }
    if (camera == nullptr) {
        refuse(serialNumber);
    }
    return *camera;
}

SharedCamera& share(Camera& camera) {
    static Mutex mutex; // guards the map
    static auto& cameras = *new std::map<const Camera*, std::unique_ptr<SharedCamera>>;
    const MutexLock lock(mutex);
    std::unique_ptr<SharedCamera>& shared = cameras[&camera];
    if (!shared) {
        shared = std::make_unique<SharedCamera>(camera);
    }
    return *shared;
}

} // namespace

void ensureWorkspace() {
    static std::once_flag isWatched;
    std::call_once(isWatched, watchCameras);
    if (Camera::getCamerasList().empty()) {
        watchCameras(); // the application may have ended the workspace
    }
}

std::vector<ListedCamera> listStreamingCameras() {
    std::vector<ListedCamera> cameras;
    for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
        if (hasStream(serialNumber)) {
            cameras.push_back({serialNumber, modelName});
        }
    }
    return cameras;
}

std::string reasonOf(const std::exception& failure) {
    const auto* const known = dynamic_cast<const KestrelExceptions::KestrelException*>(&failure);
    return known != nullptr ? known->why() : failure.what();
}

CameraUse::CameraUse(const std::string& serialNumber) {
    ensureWorkspace();
    Camera& camera = findCamera(serialNumber);
    m_SerialNumber = camera.getSerialNumber();
    m_Shared = &share(camera);
    m_Shared->join();
}

CameraUse::~CameraUse() {
    try {
        m_Shared->leave(m_SerialNumber);
    } catch (const std::exception&) {
        // The camera does not answer, or is gone: nothing is left to close.
    }
}

bool CameraUse::mayRestart() const {
    return m_Shared->mayRestart(m_SerialNumber);
}

void CameraUse::startStream() const {
    m_Shared->startStream(m_SerialNumber);
}

Mutex& CameraUse::mutex() const {
    return m_Shared->mutex;
}

Camera& CameraUse::camera() const {
    return m_Shared->listed(m_SerialNumber);
}

} // namespace QuillGStreamer
