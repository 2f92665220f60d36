// SPDX-License-Identifier: Apache-2.0

#include "Properties/BooleanProperty.h"

namespace CameraInterface {

BooleanProperty::BooleanProperty(const std::string& name, const PROPERTY_TYPE& type) : Property(name, type) {}

std::string BooleanProperty::getMinimum() {
    return m_States.toString(false);
}

std::string BooleanProperty::getMaximum() {
    return m_States.toString(true);
}

std::string BooleanProperty::getValue() {
    return m_States.toString(m_Value);
}

std::string BooleanProperty::getDefault() {
    return m_States.toString(false);
}

bool BooleanProperty::isReadOnly() {
    return false;
}

bool BooleanProperty::isAvailableForWriting() {
    return !isReadOnly();
}

bool BooleanProperty::isDiscrete() {
    return true;
}

std::vector<std::string> BooleanProperty::getValueList() {
    return m_States.getList();
}

void BooleanProperty::setValue(const std::string& value) {
    m_Value = m_States.toValue(value);
}

} // namespace CameraInterface
