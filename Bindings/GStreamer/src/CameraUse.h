// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <Quill.h>

namespace QuillGStreamer {

/// A camera as the camera list identifies it to people.
struct ListedCamera {
    std::string serialNumber;
    std::string modelName;
};

/// Makes sure that the library watches for cameras. The plug-in never ends the workspace, which is the application's.
void ensureWorkspace();

/// Returns the listed cameras that have a stream, in the order of serial numbers. Does not ask the cameras.
std::vector<ListedCamera> listStreamingCameras();

/// Returns the sentence of a failure.
std::string reasonOf(const std::exception& failure);

/// No camera of the list is the wanted one, or it has left the list.
struct NoSuchCamera : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class SharedCamera;

/// An element's use of a camera. All elements of the process use one connection and one run of the stream: what the
/// first one had to open or start, the last one closes or stops. What the application had opened or started stays.
///
/// Thread-safe: the camera is used by one element at a time.
class CameraUse {
public:
    /// Finds the camera and connects it.
    /// @param serialNumber empty for the first camera that has a stream
    /// @throws NoSuchCamera; what Camera::connect() throws
    explicit CameraUse(const std::string& serialNumber);
    CameraUse(const CameraUse&) = delete;
    CameraUse& operator=(const CameraUse&) = delete;
    ~CameraUse();

    const std::string& serialNumber() const { return m_SerialNumber; }

    /// What is done to the camera, and whether a restart of its stream disturbs nobody else.
    using Action = std::function<void(CameraInterface::Camera& camera, bool mayRestart)>;
    /// Calls @p action while no other element uses the camera.
    /// @throws NoSuchCamera  it is gone; what the action throws
    void with(const Action& action) const;
    /// Starts the stream unless it runs.
    /// @throws what Camera::startStream() throws
    void startStream() const;

private:
    std::string m_SerialNumber;
    std::shared_ptr<SharedCamera> m_Shared;
};

} // namespace QuillGStreamer
