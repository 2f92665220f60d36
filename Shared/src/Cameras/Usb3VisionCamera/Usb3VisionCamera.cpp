// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "Base/ForkedChild.h"
#include "Cameras/CameraInfo.h"
#include "Exceptions/Raise.h"
#include "Functions/Usb3Vision/Usb3VisionReboot.h"
#include "Properties/MakeConstant.h"
#include "Properties/Usb3VisionUsb3VisionMode.h"
#include "PropertyNames.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace Usb3VisionAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

/// A camera counts as dead at the second failure of three attempts to read it, so that a single failure is tolerated.
constexpr int kAliveAttempts = 3;
constexpr int kDeadFailures = 2;

/// More cameras than any computer has. A larger count is invalid.
constexpr std::uint32_t kMaximumCameras = 1024;

struct PropertyDefinition {
    const char* name;
    PROPERTY_TYPE type;
    std::unique_ptr<Property> (*make)(const std::string& name, const PROPERTY_TYPE& type, Usb3VisionCamera& camera);
};

struct FunctionDefinition {
    const char* name;
    std::unique_ptr<Function> (*make)(const std::string& name, Usb3VisionCamera* camera);
};

constexpr PropertyDefinition kProperties[] = {
    {PropertyNames::kSerialNumber, PROPERTY_TYPE::String,
     [](const std::string& name, const PROPERTY_TYPE& type, Usb3VisionCamera& camera) {
         return makeConstant(name, type, camera.getSerialNumber());
     }},
    {PropertyNames::kModelName, PROPERTY_TYPE::String,
     [](const std::string& name, const PROPERTY_TYPE& type, Usb3VisionCamera& camera) {
         return makeConstant(name, type, camera.getModelName());
     }},
    {PropertyNames::kVendorName, PROPERTY_TYPE::String,
     [](const std::string& name, const PROPERTY_TYPE& type, Usb3VisionCamera& /*camera*/) {
         return makeConstant<std::string>(name, type, "Meridane");
     }},
    {PropertyNames::kUsb3VisionMode, PROPERTY_TYPE::Boolean,
     [](const std::string& name, const PROPERTY_TYPE& type, Usb3VisionCamera& camera) -> std::unique_ptr<Property> {
         return std::make_unique<Usb3VisionUsb3VisionMode>(name, type, camera);
     }},
};

constexpr FunctionDefinition kFunctions[] = {
    {"Reboot",
     [](const std::string& name, Usb3VisionCamera* camera) -> std::unique_ptr<Function> {
         return std::make_unique<Usb3VisionReboot>(name, camera);
     }},
};

/// The model name of a record, which need not be terminated.
std::string modelNameOf(const Usb3VisionCameraRecord& record) {
    return {std::begin(record.modelName), std::find(std::begin(record.modelName), std::end(record.modelName), '\0')};
}

} // namespace

Utilities::Mutex Usb3VisionCamera::m_CameraEnumerationMutex;

Usb3VisionCamera::Usb3VisionCamera(const Usb3VisionCameraRecord& record)
    : Camera(CameraKind::Usb3Vision), m_CameraRecord(record), m_SerialNumber(std::to_string(record.serialNumber)),
      m_ModelName(modelNameOf(record)) {}

Usb3VisionCamera::~Usb3VisionCamera() {
    registerPropertyChangeCallback({});
    try {
        Usb3VisionCamera::disconnect();
    } catch (const std::exception&) {
        // A suspended camera refuses to be disconnected, but must not stay open.
        closeHandle();
    }
}

std::vector<std::unique_ptr<Camera>> Usb3VisionCamera::getListOfCameras() {
    Base::renewInEveryForkedChild<m_CameraEnumerationMutex>();
    const MutexLock lock(m_CameraEnumerationMutex);
    std::vector<std::unique_ptr<Camera>> cameras;
    for (const Usb3VisionCameraRecord& record : enumerate()) {
        cameras.push_back(std::make_unique<Usb3VisionCamera>(record));
    }
    return cameras;
}

std::vector<Usb3VisionCameraRecord> Usb3VisionCamera::enumerate() {
    const std::uint32_t announced = tarnuLibrary().TarnuNumCameras();
    if (announced == 0) {
        return {};
    }
    if (announced > kMaximumCameras) {
        raise<KestrelException>(QUILL_HERE, Errors::kCameraEnumeration);
    }
    std::vector<Usb3VisionCameraRecord> records(announced, Usb3VisionCameraRecord{});
    if (tarnuLibrary().TarnuEnumCameras(records.data(), announced) != announced) {
        raise<KestrelException>(QUILL_HERE, Errors::kCameraEnumeration);
    }
    return records;
}

void* Usb3VisionCamera::getHandle() {
    return m_Handle;
}

std::unique_ptr<Imaging::Image> Usb3VisionCamera::getImage() {
    throw std::runtime_error("Method not implemented.");
}

std::map<std::string, std::string> Usb3VisionCamera::getCameraInfo() {
    return collectCameraInfo(*this);
}

std::string Usb3VisionCamera::getSerialNumber() {
    return m_SerialNumber;
}

std::string Usb3VisionCamera::getModelName() {
    return m_ModelName;
}

bool Usb3VisionCamera::isCameraAlive() {
    int failures = 0;
    for (int attempt = 0; attempt < kAliveAttempts; ++attempt) {
        try {
            findProperty(PropertyNames::kUsb3VisionMode).getValue();
            break;
        } catch (const std::exception&) {
            ++failures;
        }
    }
    return failures < kDeadFailures;
}

void Usb3VisionCamera::connect() {
    if (isConnected() && !isRetired()) {
        return;
    }
    requireTransition(CameraState::Connected, QUILL_HERE);
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
}

void Usb3VisionCamera::disconnect() {
    if (m_Handle == nullptr) {
        return;
    }
    requireTransition(CameraState::Disconnected, QUILL_HERE);
    const Closing closing(*this);
    if (tarnuLibrary().TarnuCloseCamera(m_Handle) != 0) {
        m_Handle = nullptr;
        m_State = CameraState::Disconnected;
    }
}

void Usb3VisionCamera::suspend() {
    requireTransition(CameraState::Suspended, QUILL_HERE);
    m_State = CameraState::Suspended;
}

void Usb3VisionCamera::buildProperties() {
    for (const PropertyDefinition& definition : kProperties) {
        std::unique_ptr<Property> property = definition.make(definition.name, definition.type, *this);
        m_Properties.emplace(property->getName(), std::move(property));
    }
    updatePropertyChangeCallback();
}

void Usb3VisionCamera::buildFunctions() {
    for (const FunctionDefinition& definition : kFunctions) {
        try {
            std::unique_ptr<Function> function = definition.make(definition.name, this);
            m_Functions.emplace(function->getName(), std::move(function));
        } catch (...) {
            // A function that cannot be constructed is omitted.
        }
    }
}

Property& Usb3VisionCamera::findProperty(std::string name) { // NOLINT(performance-unnecessary-value-param): as given
    return getProperty(name);
}

void Usb3VisionCamera::openHandle() {
    m_Handle = tarnuLibrary().TarnuOpenCamera(&m_CameraRecord);
    if (m_Handle != nullptr) {
        return;
    }
    try {
        for (const Usb3VisionCameraRecord& record : enumerate()) {
            if (record.serialNumber == m_CameraRecord.serialNumber &&
                std::memcmp(&record, &m_CameraRecord, sizeof(record)) != 0) {
                m_CameraRecord = record;
                m_Handle = tarnuLibrary().TarnuOpenCamera(&m_CameraRecord);
                return;
            }
        }
    } catch (const KestrelException&) {
        // The caller reports that the camera cannot be opened.
    }
}

void Usb3VisionCamera::closeHandle() {
    if (void* handle = m_Handle.exchange(nullptr)) {
        tarnuLibrary().TarnuCloseCamera(handle);
    }
}

} // namespace Usb3VisionAdapter
