// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Cameras/GenICam.h"
#include "Device.h"
#include "FeatureTree.h"
#include "FoundCamera.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// A GigE Vision or USB3 Vision camera.
class GenICamCamera : public CameraInterface::Camera {
public:
    explicit GenICamCamera(const FoundCamera& found);
    GenICamCamera(const GenICamCamera&) = delete;
    GenICamCamera& operator=(const GenICamCamera&) = delete;
    ~GenICamCamera() override;

    /// Returns a new, disconnected object for each camera that answers.
    static std::vector<std::unique_ptr<Camera>> getListOfCameras(const CameraInterface::GenICam::Settings& settings);

    /// The open camera; null while it is not open. Thread-safe.
    std::shared_ptr<Device> device() const QUILL_EXCLUDES(m_DeviceMutex);
    bool isOnNetwork() const { return m_IsOnNetwork; }
    /// The property of a name, or null.
    CameraInterface::Property* findProperty(const std::string& name);

    using Camera::isRetired;

    /// Gives the camera free for its next object, once this one has left the list.
    void closeForGood();

    std::unique_ptr<Imaging::Image> getImage() override;
    std::map<std::string, std::string> getCameraInfo() override;
    std::string getSerialNumber() override;
    std::string getModelName() override;
    bool isCameraAlive() override;
    void connect() override;
    void disconnect() override;
    void suspend() override;

protected:
    void buildProperties() override;
    void buildFunctions() override;

private:
    void open();
    void close();
    void setDevice(std::shared_ptr<Device> device) QUILL_EXCLUDES(m_DeviceMutex);

    const std::string m_SerialNumber;
    const std::string m_ModelName;
    const bool m_IsOnNetwork;
    std::vector<FeatureDescription> m_Features; // as at the last connection
    mutable Utilities::Mutex m_DeviceMutex;     // guards the pointer, which the watching thread reads
    std::shared_ptr<Device> m_Device QUILL_GUARDED_BY(m_DeviceMutex);
};

} // namespace GenICamAdapter
