// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Properties/Property.h"

namespace CameraInterface::SimulatedAdapter {

/// A property of a simulated camera: texts, as its list describes them. Writes are not checked.
class SimulatedProperty : public Property {
public:
    SimulatedProperty(const std::string& name, PROPERTY_TYPE type, const std::string& minimum,
                      const std::string& maximum, const std::string& defaultValue, bool readOnly, bool discrete,
                      const std::vector<std::string>& valueList);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    void setValue(const std::string& value) override;

private:
    std::string m_Minimum;
    std::string m_Maximum;
    std::string m_Value;
    std::string m_Default;
    bool m_ReadOnly;
    bool m_AvailableForWriting;
    bool m_Discrete;
    std::vector<std::string> m_ValueList;
};

} // namespace CameraInterface::SimulatedAdapter
