// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Cameras/OrvexCamera/GigE.h"
#include "OrvexApi/OrvexRecords.h"
#include "Utilities/Mutex.h"

namespace OrvexAdapter {

constexpr unsigned int kGigEInterface = 4; // the SDK's number

/// A camera accessed through the maker's camera SDK.
class OrvexCamera : public CameraInterface::Camera {
public:
    /// @param version the record with which the camera was enumerated
    /// @param interface the SDK's number of the hardware interface: 1 USB 1.0, 2 USB 2.0, 3 USB 3.0, 4 GigE Vision
    OrvexCamera(const ORVEX_VERSION& version, unsigned int interface);
    OrvexCamera(const OrvexCamera&) = delete;
    OrvexCamera& operator=(const OrvexCamera&) = delete;
    ~OrvexCamera() override;

    /// Returns a new, disconnected object for each camera of the SDK. Locks the enumeration mutex.
    static std::vector<std::unique_ptr<Camera>> getListOfCameras() QUILL_EXCLUDES(m_CameraEnumerationMutex);

    /// The SDK's handle; null while the camera is not open. Must be fetched for every call of the SDK.
    void* getHandle();
    /// Whether the camera behind an SDK's handle answers; see isCameraAlive().
    static bool isAlive(void* handle);

    /// Returns the network description of a connected GigE camera; see readGigE(). Locks the enumeration mutex.
    std::optional<GigEDescription> describeNetwork() QUILL_EXCLUDES(m_CameraEnumerationMutex);

    using Camera::isRetired;

    std::unique_ptr<Imaging::Image> getImage() override;
    std::unique_ptr<Imaging::Image> convertImage(const std::unique_ptr<Imaging::Image>& image,
                                                 Imaging::IMAGE_FORMAT format) override;
    std::map<std::string, std::string> getCameraInfo() override;
    std::string getSerialNumber() override;
    std::string getModelName() override;
    bool isCameraAlive() override;
    void connect() override QUILL_EXCLUDES(m_CameraEnumerationMutex);
    void disconnect() override;
    void suspend() override;

protected:
    void buildProperties() override;
    void buildFunctions() override;

private:
    static unsigned int getNumCameras();
    static unsigned int EnumCameras(ORVEX_VERSION* versions, unsigned int count);
    static std::vector<ORVEX_VERSION> getConnectedCameras();
    unsigned int findCameraIndex();
    /// Opens this camera, even if its index changes meanwhile because another camera comes or goes. The handle stays
    /// null if the camera cannot be opened.
    void openHandle();
    bool isOnNetwork();
    void stopRunAroundImage();
    /// Reads the settings of this camera, even if its index changes meanwhile because another camera comes or goes.
    /// @throws KestrelException "GigEError"  they cannot be read
    /// @throws KestrelException "CameraEnumeration "  the index keeps changing
    void readNetworkSettings(CGigE& settings);
    /// Closes the handle, at most once: a handle that the SDK failed to close may belong to another camera by the next
    /// call.
    void closeHandle();
    /// Whether the open handle certainly belongs to another camera.
    bool hasOpenedAnother();
    bool cameraCanHandleConversion(const std::unique_ptr<Imaging::Image>& image, Imaging::IMAGE_FORMAT format);
    std::unique_ptr<Imaging::Image> convertImageUsingCamera(const std::unique_ptr<Imaging::Image>& image,
                                                            Imaging::IMAGE_FORMAT format);

    /// Serialises enumeration, which the watchdogs run, with opening: both select an interface and count cameras. No
    /// function called under it locks it again.
    static Utilities::Mutex m_CameraEnumerationMutex;

    /// The number of searches for a camera while the indices keep changing.
    static constexpr int kSearches = 5;

    std::atomic<void*> m_Handle{nullptr}; // read by the watchdog
    ORVEX_VERSION m_Version;
    CGigE m_GigE;
    unsigned int m_Interface;
    std::string m_SerialNumber;
    std::string m_ModelName;
};

} // namespace OrvexAdapter
