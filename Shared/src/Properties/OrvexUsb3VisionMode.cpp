// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexBooleanProperties.h"

#include <algorithm>
#include <array>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Internal/QuillInternal.h"
#include "OrvexApi/OrvexApi.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

using namespace QuillInternal;

namespace {

constexpr std::array<unsigned long, 13> kModels{1538, 1540, 1555, 1558, 1561, 1564, 1584,
                                                1585, 1603, 1605, 1609, 1612, 1809};
constexpr std::array<unsigned long, 4> kModelsOfFirmwareOne{1555, 1558, 1561, 1564};

template <std::size_t Size>
bool contains(const std::array<unsigned long, Size>& models, unsigned long model) {
    return std::find(models.begin(), models.end(), model) != models.end();
}

bool hasUsb3VisionMode(OrvexCamera& camera) {
    const unsigned long model =
        Base::parseUnsigned(camera.getProperty(CameraInterface::PropertyNames::kCameraId).getValue());
    if (!contains(kModels, model)) {
        return false;
    }
    ORVEX_VERSION version{}; // if it cannot be read: firmware 0, which is too old
    orvexApi().sdkQueryVersion(camera.getHandle(), &version);
    return version.firmware >= 0x100 && (!contains(kModelsOfFirmwareOne, model) || (version.firmware & 0xF00) == 0x100);
}

} // namespace

OrvexUsb3VisionMode::OrvexUsb3VisionMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                         OrvexCamera& camera)
    : BooleanProperty(name, type), m_Camera(&camera) {
    if (!hasUsb3VisionMode(camera)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexUsb3VisionMode::getValue() {
    Usb3VisionInfo info{};
    if (!Orvex::OrvexReadUsb3VisionInfo(m_Camera->getHandle(), info)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    return m_States.toString(info.mode == 0);
}

bool OrvexUsb3VisionMode::isAvailableForWriting() {
    return getValue() != m_States.toString(false) || Orvex::OrvexHasValidUsb3VisionFile(m_Camera->getHandle());
}

void OrvexUsb3VisionMode::setValue(const std::string& value) {
    if (isReadOnly() || !isAvailableForWriting()) {
        return;
    }
    Usb3VisionInfo info{};
    if (!Orvex::OrvexReadUsb3VisionInfo(m_Camera->getHandle(), info)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
    info.mode = m_States.toValue(value) ? 0 : 1;
    if (!Orvex::OrvexWriteUsb3VisionInfo(m_Camera->getHandle(), info)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
}

} // namespace OrvexAdapter
