// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <new>
#include <typeindex>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Cameras/Camera.h"

#include "Cameras/CallbackThread.h"
#include "Cameras/CameraAdapters.h"
#include "Cameras/CameraWorkspace.h"
#include "Exceptions/Raise.h"

namespace CameraInterface {

using namespace KestrelExceptions;

/// The cameras of an enumeration: the serial numbers of each kind, which is the class. A camera that restarts as
/// another kind keeps its number but is another camera.
class PresentCameras {
public:
    explicit PresentCameras(const std::vector<std::unique_ptr<Camera>>& cameras) {
        for (const auto& pointer : cameras) {
            Camera& camera = *pointer;
            try {
                m_SerialNumbers[typeid(camera)].insert(camera.getSerialNumber());
            } catch (const std::exception&) {
                m_Complete = false;
            }
        }
    }

    /// Whether a camera is certainly absent: one whose serial number cannot be read might be any camera.
    bool lack(const Camera& camera, const std::string& serialNumber) const {
        const auto ofKind = m_SerialNumbers.find(typeid(camera));
        return m_Complete && (ofKind == m_SerialNumbers.end() || ofKind->second.count(serialNumber) == 0);
    }

private:
    std::unordered_map<std::type_index, std::unordered_set<std::string>> m_SerialNumbers;
    bool m_Complete = true;
};

namespace {

CameraWorkspace& workspace() {
    return CameraWorkspace::instance();
}

CameraList& list() {
    return workspace().cameras();
}

/// Limits a reason, which may quote a file of any length.
std::string shortened(std::string reason) {
    constexpr std::size_t kLongestReason = 1000;
    if (reason.size() > kLongestReason) {
        reason.resize(kLongestReason);
        reason += " ...";
    }
    return reason;
}

} // namespace

void Camera::initialiseWorkspace() {
    CallbackThread::refuse();
    addNewCamerasToList(getListOfCameras());
    workspace().startWatchdogs(callbackWatchdogNewConnect, callbackWatchdogDisconnect);
}

void Camera::unitialisedWorkpace() {
    CallbackThread::refuse();
    removeWatchdogs();
    removeAllCamerasFromList();
    workspace().restAdapters(false);
}

std::map<std::string, std::string> Camera::getCamerasList() {
    std::map<std::string, std::string> modelNames;
    for (const CameraList::CameraPointer& camera : list().inOrderAdded()) {
        try {
            std::string modelName = camera->getModelName();
            // Cameras are mostly added in the order of the map.
            modelNames.emplace_hint(modelNames.end(), camera->getSerialNumber(), std::move(modelName));
        } catch (const std::exception&) {
            // A camera without a readable name is omitted.
        }
    }
    return modelNames;
}

Camera& Camera::getCamera(const std::string& serialNumber) {
    const CameraList::CameraPointer camera = list().find(serialNumber);
    if (!camera) {
        raise<KestrelException_Camera>(QUILL_HERE, Errors::kCameraNotFound, serialNumber);
    }
    return *camera; // still owned by the list, as listed or retired
}

unsigned int Camera::searchForNewCameras() {
    return list().add(getListOfCameras());
}

void Camera::registerNewConnectCallback(std::function<void()> callback) {
    CallbackThread::refuse();
    workspace().setNewConnectCallback(std::move(callback));
}

void Camera::registerDisconnectCallback(std::function<void(const std::string&, const std::string&)> callback) {
    CallbackThread::refuse();
    workspace().setDisconnectCallback(std::move(callback));
}

std::map<std::string, std::string> Camera::getEnumerationFailures() {
    return workspace().enumerationFailures();
}

bool Camera::isCameraInList(const std::string& serialNumber, const std::vector<std::unique_ptr<Camera>>& cameras) {
    return std::any_of(cameras.begin(), cameras.end(),
                       [&](const auto& camera) { return camera->getSerialNumber() == serialNumber; });
}

void Camera::runNewConnectCallback() {
    if (const auto callback = workspace().newConnectCallback()) {
        callback();
    }
}

void Camera::runDisconnectCallback(const std::string& modelName, const std::string& serialNumber) {
    if (const auto callback = workspace().disconnectCallback()) {
        callback(modelName, serialNumber);
    }
}

std::vector<std::unique_ptr<Camera>> Camera::getListOfCameras() {
    std::vector<std::unique_ptr<Camera>> cameras;
    std::map<std::string, std::string> failures;
    const std::vector<CameraAdapter> adapters = getCameraAdapters();
    workspace().rememberAdapters(adapters);
    for (const CameraAdapter& adapter : adapters) {
        try {
            std::vector<std::unique_ptr<Camera>> found = adapter.getListOfCameras();
            std::move(found.begin(), found.end(), std::back_inserter(cameras));
        } catch (const KestrelException& failure) {
            failures.emplace(adapter.name, shortened(failure.why()));
        } catch (const std::bad_alloc&) {
            failures.emplace(adapter.name, "Out of memory.");
        } catch (const std::exception& failure) {
            failures.emplace(adapter.name, shortened(failure.what()));
        } catch (...) {
            failures.emplace(adapter.name, "unknown failure");
        }
    }
    workspace().setEnumerationFailures(std::move(failures));
    return cameras;
}

void Camera::addNewCamerasToList(std::vector<std::unique_ptr<Camera>> cameras) {
    list().add(std::move(cameras));
}

void Camera::removeCameraFromList(const std::string& serialNumber) {
    list().retire(serialNumber);
}

void Camera::removeAllCamerasFromList() {
    list().clear();
}

bool Camera::hasVanished(Camera& camera, const std::string& serialNumber, const PresentCameras& present) {
    const unsigned int steps = camera.m_ClosingSteps; // read before the state, to detect a closing in between
    switch (camera.getState()) {
    case CameraState::Connected: {
        if (camera.isCameraAlive()) {
            return false;
        }
        const bool wasClosed = steps % 2 != 0 || steps != camera.m_ClosingSteps;
        return !wasClosed || present.lack(camera, serialNumber);
    }
    case CameraState::Disconnected:
        return present.lack(camera, serialNumber);
    case CameraState::Suspended:
        return false;
    }
    return false;
}

int Camera::removeInactiveCamerasFromList() {
    const auto listed = list().inOrderOfSerialNumber();
    const std::vector<std::unique_ptr<Camera>> found = getListOfCameras();
    const PresentCameras present(found);
    int dropped = 0;
    for (const auto& [serialNumber, camera] : listed) {
        try {
            const std::string modelName = camera->getModelName();
            if (hasVanished(*camera, serialNumber, present) && list().retire(serialNumber)) {
                ++dropped;
                runDisconnectCallback(modelName, serialNumber);
            }
            if (present.lack(*camera, serialNumber)) {
                camera->endFailedResumption();
            }
        } catch (...) {
            // A failure of one camera, or of one callback, must not prevent the check of the others.
        }
    }
    return dropped;
}

void Camera::removeWatchdogs() {
    workspace().stopWatchdogs();
}

bool Camera::callbackWatchdogNewConnect() {
    const CallbackThread mark;
    if (searchForNewCameras() > 0) {
        runNewConnectCallback();
    }
    return true;
}

bool Camera::callbackWatchdogDisconnect() {
    const CallbackThread mark;
    removeInactiveCamerasFromList();
    return true;
}

} // namespace CameraInterface
