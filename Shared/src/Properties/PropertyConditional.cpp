// SPDX-License-Identifier: Apache-2.0

#include "Properties/PropertyConditional.h"

namespace CameraInterface {

PropertyConditional::PropertyConditional(const std::string& name, const PROPERTY_TYPE& type,
                                         Property& conditionProperty, const std::string& conditionValue,
                                         Property& propertyIfEqual, Property& propertyOtherwise)
    : Property(name, type), m_ConditionProperty(&conditionProperty), m_ConditionValue(conditionValue),
      m_PropertyIfEqual(&propertyIfEqual), m_PropertyOtherwise(&propertyOtherwise) {}

Property& PropertyConditional::selected() {
    return m_ConditionProperty->getValue() == m_ConditionValue ? *m_PropertyIfEqual : *m_PropertyOtherwise;
}

std::string PropertyConditional::getMinimum() {
    return selected().getMinimum();
}

std::string PropertyConditional::getMaximum() {
    return selected().getMaximum();
}

std::string PropertyConditional::getValue() {
    return selected().getValue();
}

std::string PropertyConditional::getDefault() {
    return selected().getDefault();
}

bool PropertyConditional::isReadOnly() {
    return selected().isReadOnly();
}

bool PropertyConditional::isAvailableForWriting() {
    return selected().isAvailableForWriting();
}

bool PropertyConditional::isDiscrete() {
    return selected().isDiscrete();
}

std::vector<std::string> PropertyConditional::getValueList() {
    return selected().getValueList();
}

void PropertyConditional::setValue(const std::string& value) {
    selected().setValue(value);
}

std::string PropertyConditional::getUnit() {
    return selected().getUnit();
}

std::string PropertyConditional::getIncrement() {
    return selected().getIncrement();
}

} // namespace CameraInterface
