// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

namespace OrvexAdapter {

OrvexInformationProperty::OrvexInformationProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                                   OrvexCamera& camera)
    : Property(name, type), m_Camera(&camera) {}

std::string OrvexInformationProperty::getMinimum() {
    return getValue();
}

std::string OrvexInformationProperty::getMaximum() {
    return getValue();
}

std::string OrvexInformationProperty::getDefault() {
    return getValue();
}

bool OrvexInformationProperty::isReadOnly() {
    return true;
}

bool OrvexInformationProperty::isAvailableForWriting() {
    return !isReadOnly();
}

bool OrvexInformationProperty::isDiscrete() {
    return true;
}

std::vector<std::string> OrvexInformationProperty::getValueList() {
    return {getValue()};
}

void OrvexInformationProperty::setValue(const std::string& /*value*/) {}

} // namespace OrvexAdapter
