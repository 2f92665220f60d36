// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "TarnuLibrary/TarnuOperations.h"
#include "Utilities/Mutex.h"

namespace Usb3VisionAdapter {

/// A camera that starts as a USB3 Vision device and is reached through the maker's USB3 Vision access library. It says
/// what it is and can be brought back to the camera SDK; it delivers no images.
class Usb3VisionCamera : public CameraInterface::Camera {
public:
    /// @param record the record with which the camera was enumerated
    explicit Usb3VisionCamera(const Usb3VisionCameraRecord& record);
    Usb3VisionCamera(const Usb3VisionCamera&) = delete;
    Usb3VisionCamera& operator=(const Usb3VisionCamera&) = delete;
    ~Usb3VisionCamera() override;

    /// A new, disconnected object for each camera of the library. Takes the enumeration mutex.
    /// @throws KestrelException "CameraEnumeration "  the library fills another number of records than it announced
    static std::vector<std::unique_ptr<Camera>> getListOfCameras() QUILL_EXCLUDES(m_CameraEnumerationMutex);

    /// The library's handle; null while the camera is not open. Taken anew for every call of the library.
    void* getHandle();

    /// @throws std::runtime_error "Method not implemented."
    std::unique_ptr<Imaging::Image> getImage() override;
    std::map<std::string, std::string> getCameraInfo() override;
    std::string getSerialNumber() override;
    std::string getModelName() override;
    bool isCameraAlive() override;
    void connect() override QUILL_EXCLUDES(m_CameraEnumerationMutex);
    void disconnect() override;
    void suspend() override;
    /// Like getProperty().
    virtual CameraInterface::Property& findProperty(std::string name);

protected:
    void buildProperties() override;
    void buildFunctions() override;

private:
    static std::vector<Usb3VisionCameraRecord> enumerate();
    /// Opens the camera, also where it is enumerated with another record now. The handle stays null where it cannot be
    /// opened.
    void openHandle();
    /// Closes the handle, once: one that the library does not close may be another camera's by the next call.
    void closeHandle();

    /// Serialises enumeration, which the watchdogs run, with opening. Nothing that is called under it takes it again.
    static Utilities::Mutex m_CameraEnumerationMutex;

    std::atomic<void*> m_Handle{nullptr}; // read by the watchdog
    Usb3VisionCameraRecord m_CameraRecord;
    std::string m_SerialNumber;
    std::string m_ModelName;
};

} // namespace Usb3VisionAdapter
