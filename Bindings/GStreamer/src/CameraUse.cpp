// SPDX-License-Identifier: Apache-2.0

#include "CameraUse.h"

#include <exception>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace QuillGStreamer {

using CameraInterface::Camera;
using Utilities::Mutex;
using Utilities::MutexLock;

/// What the elements of the process did to a camera; lives as long as one of them uses it.
class SharedCamera {
public:
    explicit SharedCamera(Camera& camera) : m_Camera(camera) {}

    /// Adds a user, and connects the camera.
    /// @return false if the camera is gone
    bool join(const std::string& serialNumber) {
        const MutexLock lock(m_Mutex);
        if (!isListed(serialNumber)) {
            return false;
        }
        if (!m_Camera.isConnected()) {
            m_Camera.connect();
            m_ConnectedHere = true;
        }
        ++m_Users;
        return true;
    }

    void with(const std::string& serialNumber, const CameraUse::Action& action) {
        const MutexLock lock(m_Mutex);
        Camera& camera = listed(serialNumber);
        action(camera, !camera.isStreaming() || (m_StartedHere && m_Users == 1));
    }

    void startStream(const std::string& serialNumber) {
        const MutexLock lock(m_Mutex);
        Camera& camera = listed(serialNumber);
        if (!camera.isStreaming()) {
            camera.startStream();
            m_StartedHere = true;
        }
    }

    void leave(const std::string& serialNumber) {
        const MutexLock lock(m_Mutex);
        if (--m_Users != 0) {
            return;
        }
        const bool stops = std::exchange(m_StartedHere, false);
        const bool disconnects = std::exchange(m_ConnectedHere, false);
        Camera& camera = listed(serialNumber);
        try {
            if (stops) {
                camera.stopStream();
            }
        } catch (const std::exception&) {
            if (!disconnects) {
                throw;
            } // else it is tried again
        }
        if (disconnects) {
            camera.disconnect();
        }
    }

private:
    /// Whether the camera is still in the list; otherwise it may have been destroyed.
    bool isListed(const std::string& serialNumber) QUILL_REQUIRES(m_Mutex) {
        try {
            m_IsGone = m_IsGone || &Camera::getCamera(serialNumber) != &m_Camera || !isSame();
        } catch (const KestrelExceptions::KestrelException_Camera&) {
            m_IsGone = true; // nor is another camera of this serial number there
        }
        return !m_IsGone;
    }

    /// Tells the camera from another one that has taken its place in memory: a copy of statistics shares its counters
    /// with their source.
    bool isSame() QUILL_REQUIRES(m_Mutex) {
        constexpr auto kUnused = CameraInterface::STREAM_TYPE::Reserved;
        CameraInterface::StreamStatistics& present = m_Camera.getStreamStatistics();
        if (!m_Statistics) {
            m_Statistics = present;
        }
        const auto before = present.getFrameCount(kUnused);
        m_Statistics->incrementFrameCount(kUnused);
        return present.getFrameCount(kUnused) != before;
    }

    Camera& listed(const std::string& serialNumber) QUILL_REQUIRES(m_Mutex) {
        if (!isListed(serialNumber)) {
            throw NoSuchCamera("Camera " + serialNumber + " is gone.");
        }
        return m_Camera;
    }

    Camera& m_Camera;
    Mutex m_Mutex; // guards what follows, and that one element at a time uses the camera
    std::optional<CameraInterface::StreamStatistics> m_Statistics QUILL_GUARDED_BY(m_Mutex);
    unsigned m_Users QUILL_GUARDED_BY(m_Mutex) = 0;
    bool m_ConnectedHere QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_StartedHere QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_IsGone QUILL_GUARDED_BY(m_Mutex) = false;
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

/// A camera of the list, which it has left when the application ends the workspace.
struct Found {
    std::string serialNumber;
    Camera* camera; ///< null if there is none
};

Found findListed(std::string serialNumber) {
    try {
        if (serialNumber.empty()) {
            const std::vector<ListedCamera> cameras = listStreamingCameras();
            if (cameras.empty()) {
                return {"", nullptr};
            }
            serialNumber = cameras.front().serialNumber;
        }
        return {serialNumber, &Camera::getCamera(serialNumber)};
    } catch (const std::exception&) {
        return {serialNumber, nullptr};
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

Found findCamera(const std::string& serialNumber) {
    Found found = findListed(serialNumber);
    if (found.camera == nullptr) {
        watchCameras(); // it may have just arrived, or the application has ended the workspace
        found = findListed(serialNumber);
    }
    if (found.camera == nullptr) {
        refuse(serialNumber);
    }
    return found;
}

/// Returns what the elements that use a camera share, but not @p gone, whose camera had the same place in memory.
std::shared_ptr<SharedCamera> share(Camera& camera, const std::shared_ptr<SharedCamera>& gone) {
    static Mutex mutex; // guards the map
    static auto& cameras = *new std::map<const Camera*, std::weak_ptr<SharedCamera>>;
    const MutexLock lock(mutex);
    for (auto entry = cameras.begin(); entry != cameras.end();) {
        entry = entry->second.expired() ? cameras.erase(entry) : std::next(entry);
    }
    std::weak_ptr<SharedCamera>& known = cameras[&camera];
    std::shared_ptr<SharedCamera> shared = known.lock();
    if (!shared || shared == gone) {
        shared = std::make_shared<SharedCamera>(camera);
        known = shared;
    }
    return shared;
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
    do {
        const Found found = findCamera(serialNumber);
        m_SerialNumber = found.serialNumber;
        m_Shared = share(*found.camera, m_Shared);
    } while (!m_Shared->join(m_SerialNumber));
}

CameraUse::~CameraUse() {
    try {
        m_Shared->leave(m_SerialNumber);
    } catch (const std::exception&) {
        // The camera does not answer, or is gone: nothing is left to close.
    }
}

void CameraUse::with(const Action& action) const {
    m_Shared->with(m_SerialNumber, action);
}

void CameraUse::startStream() const {
    m_Shared->startStream(m_SerialNumber);
}

} // namespace QuillGStreamer
