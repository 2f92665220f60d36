// SPDX-License-Identifier: Apache-2.0

#include "Conformance/Subject.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>
#include <vector>

#include "Camera/CameraKind.h"

namespace QuillTool::Conformance {

using CameraInterface::Camera;
namespace PropertyNames = CameraInterface::PropertyNames;

namespace {

struct KindName {
    Kind kind;
    const char* name;
};

constexpr KindName kKindNames[] = {{Kind::Sdk, "an SDK camera"},
                                   {Kind::SdkWithoutStream, "an SDK camera that cannot stream"},
                                   {Kind::Usb3Vision, "a USB3 Vision camera"},
                                   {Kind::Simulated, "a simulated camera"},
                                   {Kind::GenICam, "a GenICam camera"}};

/// The properties that a stream requires.
constexpr std::array kStreamProperties{
    PropertyNames::kHeight,        PropertyNames::kPixelFormat,     PropertyNames::kSamplingDescription,
    PropertyNames::kColorFormat,   PropertyNames::kHardwareTrigger, PropertyNames::kStillExposureDelay,
    PropertyNames::kStillExposure, PropertyNames::kStillGain,       PropertyNames::kStillStrobeDelay,
};

/// All of them take parameters. The examination calls them without any, and the first also to read 16 bytes.
constexpr std::array kFunctions{"Read Flash",        "Reboot",       "Write Flash", "Erase Flash",
                                "Read Flash Status", "Update Flash", "Write Ram"};

} // namespace

const char* nameOf(Kind kind) {
    return std::find_if(std::begin(kKindNames), std::end(kKindNames),
                        [&](const KindName& row) { return row.kind == kind; })
        ->name;
}

Subject::Subject(const std::string& serialNumber, const Plug& plug, FlashWrites flashWrites)
    : m_SerialNumber(serialNumber), m_Plug(plug), m_FlashWrites(flashWrites) {
    renew();
    m_Camera->connect();
    m_Kind = findKind();
    m_ModelName = m_Camera->getModelName();
    m_FirmwareVersion = m_Camera->getCameraInfo()[PropertyNames::kFirmwareVersion];
    m_Property = findProperty();
    if (!m_Property.empty()) {
        m_PropertyValue = m_Camera->getProperty(m_Property).getValue();
    }
    m_Function = findFunction();
}

Subject::~Subject() {
    try {
        Camera::unitialisedWorkpace();
    } catch (const std::exception&) {
        // Runs on a thread of the library; the workspace ends with the process.
    }
}

void Subject::renew() {
    Camera::unitialisedWorkpace();
    if (m_Plug.putBack) {
        m_Plug.putBack();
    }
    Camera::searchForNewCameras();
    m_Camera = &Camera::getCamera(m_SerialNumber);
}

Kind Subject::findKind() const {
    switch (kindOf(*m_Camera)) {
    case CameraKind::Simulated:
        return Kind::Simulated;
    case CameraKind::Usb3Vision:
        return Kind::Usb3Vision;
    case CameraKind::GenICam:
        return Kind::GenICam;
    case CameraKind::Sdk:
        break;
    }
    const bool canStream = std::all_of(kStreamProperties.begin(), kStreamProperties.end(),
                                       [this](const char* name) { return m_Camera->isPropertySupported(name); });
    return canStream ? Kind::Sdk : Kind::SdkWithoutStream;
}

std::string Subject::findProperty() const {
    switch (m_Kind) {
    case Kind::Sdk:
        return PropertyNames::kStillExposure;
    case Kind::GenICam:
        return PropertyNames::kWidth;
    case Kind::SdkWithoutStream:
        return PropertyNames::kSerialNumber;
    case Kind::Usb3Vision:
        return PropertyNames::kUsb3VisionMode;
    case Kind::Simulated:
        break;
    }
    const std::vector<std::string> names = m_Camera->getSupportedProperties();
    const auto writable = std::find_if(names.begin(), names.end(), [this](const std::string& name) {
        return m_Camera->getProperty(name).isAvailableForWriting();
    });
    return names.empty() ? "" : writable == names.end() ? names.front() : *writable;
}

std::string Subject::findFunction() const {
    const std::vector<std::string> names = m_Camera->getSupportedFunctions();
    const auto* found = std::find_if(kFunctions.begin(), kFunctions.end(), [&](const char* name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    });
    return found == kFunctions.end() ? "" : *found;
}

void Subject::count(const std::vector<CameraInterface::StreamCounter>& counters) {
    if (m_Counters.empty()) {
        m_Counters = counters; // every object of a camera has the same ones
        return;
    }
    for (std::size_t i = 0; i < std::min(counters.size(), m_Counters.size()); ++i) {
        m_Counters[i].value += counters[i].value;
    }
}

} // namespace QuillTool::Conformance
