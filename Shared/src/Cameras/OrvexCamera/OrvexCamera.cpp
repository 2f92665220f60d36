// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/OrvexCamera.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Base/ForkedChild.h"
#include "Cameras/CameraInfo.h"
#include "Cameras/OrvexCamera/ColorFormatLayout.h"
#include "Cameras/OrvexCamera/ModelNames.h"
#include "Exceptions/Raise.h"
#include "Functions/Orvex/OrvexFunctions.h"
#include "OrvexApi/OrvexApi.h"
#include "OrvexPropertyBuilder.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"
#include "Streams/OrvexStream.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

constexpr unsigned int kEnumeratedInterfaces[] = {2};

/// A camera counts as dead if kDeadFailures of this many queries fail, so that a single failure is tolerated.
constexpr int kAliveQueries = 3;
constexpr int kDeadFailures = 2;

/// More cameras than an interface of any computer has. A larger count is invalid.
constexpr std::uint32_t kMaximumCameras = 1024;

} // namespace

Utilities::Mutex OrvexCamera::m_CameraEnumerationMutex;

OrvexCamera::OrvexCamera(const ORVEX_VERSION& version, unsigned int interface)
    : Camera(drivesSoftwareDevices() ? CameraKind::SoftwareDevice : CameraKind::SdkDevice), m_Version(version),
      m_Interface(interface), m_ModelName(getModelNameFromCameraId(version.cameraid)) {
    if (m_Interface == kGigEInterface) {
        readNetworkSettings(m_GigE);
        m_SerialNumber = m_GigE.GetCamMacAddress();
    } else {
        m_SerialNumber = std::to_string(version.serialnumber);
    }
    m_Stream = std::make_unique<OrvexStream>(*this);
}

OrvexCamera::~OrvexCamera() {
    m_Stream->forceStop();
    registerPropertyChangeCallback({});
    try {
        OrvexCamera::disconnect();
    } catch (const std::exception&) {
        // A suspended camera refuses to be disconnected, but must not stay open.
        closeHandle();
    }
}

std::vector<std::unique_ptr<Camera>> OrvexCamera::getListOfCameras() {
    Base::renewInEveryForkedChild<m_CameraEnumerationMutex>();
    const MutexLock lock(m_CameraEnumerationMutex);
    std::vector<std::unique_ptr<Camera>> cameras;
    for (const unsigned int interface : kEnumeratedInterfaces) {
        if (orvexApi().sdkSelectInterface(interface) == 0) {
            continue;
        }
        try {
            for (const ORVEX_VERSION& version : getConnectedCameras()) {
                try {
                    cameras.push_back(std::make_unique<OrvexCamera>(version, interface));
                } catch (const std::exception&) {
                    // The next camera may still be usable.
                }
            }
        } catch (const std::exception&) {
            // The next interface may still be usable.
        }
    }
    return cameras;
}

void* OrvexCamera::getHandle() {
    return m_Handle;
}

std::unique_ptr<Imaging::Image> OrvexCamera::getImage() {
    const bool wasStreaming = isStreaming();
    if (!wasStreaming) {
        startStream();
    }
    Imaging::IMAGE_FORMAT layout{};
    std::vector<unsigned char> data;
    FrameGeometry geometry;
    try {
        layout = getImageFormatFromColorFormat(getProperty(PropertyNames::kColorFormat).getValue(), QUILL_HERE);
        data = m_Stream->getImageData();
        geometry = m_Stream->getImageFormat();
    } catch (...) {
        if (!wasStreaming) {
            try {
                stopRunAroundImage();
            } catch (const KestrelException&) {
                // The reason why there is no image matters more.
            }
        }
        throw;
    }
    if (!wasStreaming) {
        stopRunAroundImage();
    }
    const bool littleEndian = Endianness().toValue(getProperty(PropertyNames::kEndianness).getValue());
    return Imaging::createImage(geometry.width, geometry.height, std::move(data), geometry.bitsPerPixel, littleEndian,
                                layout);
}

void OrvexCamera::stopRunAroundImage() {
    try {
        stopStream();
    } catch (const KestrelException&) {
        // If the camera answers, its stream continues, so that the application can retry.
        if (!isCameraAlive()) {
            m_Stream->forceStop();
        }
        throw;
    }
}

std::map<std::string, std::string> OrvexCamera::getCameraInfo() {
    return collectCameraInfo(*this);
}

std::string OrvexCamera::getSerialNumber() {
    return m_SerialNumber;
}

std::string OrvexCamera::getModelName() {
    return m_ModelName;
}

bool OrvexCamera::isCameraAlive() {
    return isAlive(m_Handle);
}

bool OrvexCamera::isAlive(void* handle) {
    int failures = 0;
    for (int query = 0; query < kAliveQueries; ++query) {
        ORVEX_VERSION scratch{};
        failures += orvexApi().sdkQueryVersion(handle, &scratch) == 0 ? 1 : 0;
    }
    return failures < kDeadFailures;
}

void OrvexCamera::connect() {
    if (isConnected() && !isRetired()) {
        return;
    }
    requireTransition(CameraState::Connected, QUILL_HERE);
    m_Stream->forceStop(); // a stream started on a suspended camera uses its handle
    {
        const MutexLock lock(m_CameraEnumerationMutex);
        closeHandle();
        openHandle();
        if (m_Handle == nullptr || isRetired()) {
            closeHandle();
            refuseConnection(QUILL_HERE);
        }
        buildProperties();
        buildFunctions();
        m_State = CameraState::Connected;
        expectStreamEnd(FrameQueueStatus::Stopped); // no longer "suspended"
    }
    OrvexPropertyBuilder::restoreTrigger(m_Properties);
}

void OrvexCamera::disconnect() {
    if (m_Handle == nullptr) {
        return;
    }
    requireTransition(CameraState::Disconnected, QUILL_HERE);
    if (isStreaming()) {
        stopStream();
    }
    const Closing closing(*this);
    if (orvexApi().sdkCameraClose(m_Handle) != 0) {
        m_Handle = nullptr;
        m_State = CameraState::Disconnected;
    }
}

void OrvexCamera::suspend() {
    requireTransition(CameraState::Suspended, QUILL_HERE);
    if (isStreaming()) {
        m_Stream->stopStream(); // queues get "suspended" as the reason, not "stopped"
    }
    m_State = CameraState::Suspended;
}

void OrvexCamera::closeHandle() {
    if (void* handle = m_Handle.exchange(nullptr)) {
        orvexApi().sdkCameraClose(handle);
    }
}

void OrvexCamera::openHandle() {
    for (int search = 0; search < kSearches; ++search) {
        const unsigned int index = findCameraIndex();
        m_Handle = orvexApi().sdkCameraOpen(index);
        if (m_Handle != nullptr) {
            orvexApi().sdkPostOpenSetup(m_Handle, 1);
            if (!hasOpenedAnother()) {
                return;
            }
            closeHandle();
        }
        if (findCameraIndex() == index) {
            return; // cannot be opened
        }
    }
}

bool OrvexCamera::hasOpenedAnother() {
    ORVEX_VERSION opened{};
    return orvexApi().sdkQueryVersion(m_Handle, &opened) != 0 && opened.serialnumber != m_Version.serialnumber;
}

void OrvexCamera::buildProperties() {
    OrvexPropertyBuilder::build(m_Properties, *this);
    updatePropertyChangeCallback();
    connectIncrements();
    for (const char* name : {PropertyNames::kVideoExposure, PropertyNames::kVideoGain, PropertyNames::kColorFormat}) {
        describeFramesAfterChangeOf(name);
    }
}

void OrvexCamera::buildFunctions() {
    buildOrvexFunctions(m_Functions, this);
}

unsigned int OrvexCamera::getNumCameras() {
    unsigned int count = 0;
    while (count < kMaximumCameras) {
        void* handle = orvexApi().sdkCameraOpen(count + 1);
        if (handle == nullptr) {
            break;
        }
        orvexApi().sdkCameraClose(handle);
        ++count;
    }
    return count;
}

unsigned int OrvexCamera::EnumCameras(ORVEX_VERSION* versions, unsigned int count) {
    unsigned int index = 1;
    for (; index <= count; ++index) {
        void* handle = orvexApi().sdkCameraOpen(index);
        if (handle == nullptr) {
            break;
        }
        orvexApi().sdkQueryVersion(handle, &versions[index - 1]);
        orvexApi().sdkCameraClose(handle);
    }
    return index - 1;
}

std::vector<ORVEX_VERSION> OrvexCamera::getConnectedCameras() {
    const auto announced = static_cast<std::uint32_t>(std::max(orvexApi().sdkNumCameras(), 0));
    if (announced == 0) {
        return {};
    }
    if (announced > kMaximumCameras) {
        raise<KestrelException>(QUILL_HERE, Errors::kCameraEnumeration);
    }
    std::vector<ORVEX_VERSION> versions(announced, ORVEX_VERSION{});
    const auto filled = std::max(orvexApi().sdkEnumCameras(versions.data(), announced), 0);
    if (static_cast<std::uint32_t>(filled) != announced) {
        raise<KestrelException>(QUILL_HERE, Errors::kCameraEnumeration);
    }
    return versions;
}

unsigned int OrvexCamera::findCameraIndex() {
    if (orvexApi().sdkSelectInterface(m_Interface) == 0) {
        return 0;
    }
    const std::vector<ORVEX_VERSION> versions = getConnectedCameras();
    const auto place = std::find_if(versions.begin(), versions.end(), [&](const ORVEX_VERSION& version) {
        return version.serialnumber == m_Version.serialnumber;
    });
    return place == versions.end() ? 0 : static_cast<unsigned int>(place - versions.begin()) + 1;
}

} // namespace OrvexAdapter
