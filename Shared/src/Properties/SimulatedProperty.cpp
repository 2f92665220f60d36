// SPDX-License-Identifier: Apache-2.0

#include "Properties/SimulatedProperty.h"

namespace CameraInterface::SimulatedAdapter {

SimulatedProperty::SimulatedProperty(const std::string& name, PROPERTY_TYPE type, const std::string& minimum,
                                     const std::string& maximum, const std::string& defaultValue, bool readOnly,
                                     bool discrete, const std::vector<std::string>& valueList)
    : Property(name, type), m_Minimum(minimum), m_Maximum(maximum), m_Value(defaultValue), m_Default(defaultValue),
      m_ReadOnly(readOnly), m_AvailableForWriting(!readOnly), m_Discrete(discrete), m_ValueList(valueList) {}

std::string SimulatedProperty::getMinimum() {
    return m_Minimum;
}

std::string SimulatedProperty::getMaximum() {
    return m_Maximum;
}

std::string SimulatedProperty::getValue() {
    return m_Value;
}

std::string SimulatedProperty::getDefault() {
    return m_Default;
}

bool SimulatedProperty::isReadOnly() {
    return m_ReadOnly;
}

bool SimulatedProperty::isAvailableForWriting() {
    return m_AvailableForWriting;
}

bool SimulatedProperty::isDiscrete() {
    return m_Discrete;
}

std::vector<std::string> SimulatedProperty::getValueList() {
    return m_ValueList;
}

void SimulatedProperty::setValue(const std::string& value) {
    if (!isReadOnly() && isAvailableForWriting()) {
        m_Value = value;
        onChange(true);
    }
}

} // namespace CameraInterface::SimulatedAdapter
