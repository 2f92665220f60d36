// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexPowerMode.h"

#include <cstdint>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexPowerMode::OrvexPowerMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : Property(name, type), m_Camera(&camera) {
    try {
        OrvexPowerMode::getValue();
    } catch (...) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexPowerMode::getMinimum() {
    return m_ValueEnumeration.toString(false);
}

std::string OrvexPowerMode::getMaximum() {
    return m_ValueEnumeration.toString(true);
}

std::string OrvexPowerMode::getValue() {
    std::uint32_t mode = 0;
    if (orvexApi().sdkGetPowerMode(m_Camera->getHandle(), &mode) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnknown, getName());
    }
    return m_ValueEnumeration.toString(mode != 0);
}

std::string OrvexPowerMode::getDefault() {
    return m_ValueEnumeration.toString(false);
}

bool OrvexPowerMode::isReadOnly() {
    return false;
}

bool OrvexPowerMode::isAvailableForWriting() {
    return true;
}

bool OrvexPowerMode::isDiscrete() {
    return true;
}

std::vector<std::string> OrvexPowerMode::getValueList() {
    return m_ValueEnumeration.getList();
}

void OrvexPowerMode::setValue(const std::string& value) {
    const std::uint32_t mode = m_ValueEnumeration.toValue(value) ? 1 : 0;
    if (orvexApi().sdkSetPowerMode(m_Camera->getHandle(), mode) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnknown, getName());
    }
}

} // namespace OrvexAdapter
