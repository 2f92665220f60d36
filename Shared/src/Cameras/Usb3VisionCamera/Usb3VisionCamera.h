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

/// A camera that starts as a USB3 Vision device and is accessed through the maker's USB3 Vision access library. It can
/// be described and returned to the camera SDK; it delivers no images.
class Usb3VisionCamera : public CameraInterface::Camera {
public:
    /// @param record the record with which the camera was enumerated
    explicit Usb3VisionCamera(const Usb3VisionCameraRecord& record);
    Usb3VisionCamera(const Usb3VisionCamera&) = delete;
    Usb3VisionCamera& operator=(const Usb3VisionCamera&) = delete;
    ~Usb3VisionCamera() override;

    /// Returns a new, disconnected object for each camera of the library. Locks the enumeration mutex.
    /// @throws KestrelException "CameraEnumeration "  the library fills a number of records other than announced
    static std::vector<std::unique_ptr<Camera>> getListOfCameras() QUILL_EXCLUDES(m_CameraEnumerationMutex);

    /// The library's handle; null while the camera is not open. Must be fetched for every call of the library.
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
    /// Opens the camera, also if its record in the enumeration has changed. The handle stays null if the camera cannot
    /// be opened.
    void openHandle();
    /// Closes the handle, at most once: a handle that the library failed to close may belong to another camera by the
    /// next call.
    void closeHandle();

    /// Serialises enumeration, which the watchdogs run, with opening. No function called under it locks it again.
    static Utilities::Mutex m_CameraEnumerationMutex;

    std::atomic<void*> m_Handle{nullptr}; // read by the watchdog
    Usb3VisionCameraRecord m_CameraRecord;
    std::string m_SerialNumber;
    std::string m_ModelName;
};

} // namespace Usb3VisionAdapter
