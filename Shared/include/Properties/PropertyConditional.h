// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "../Export.h"
#include "Property.h"

namespace CameraInterface {

/// Stands for one of two properties, selected at every call by the present value of a third.
///
/// It has no value of its own and forwards every call unchanged to the selected property. update() runs this property's
/// own callback.
class QUILL_API PropertyConditional : public Property {
public:
    /// Stands for @p propertyIfEqual while @p conditionProperty reads @p conditionValue, otherwise for @p
    /// propertyOtherwise. The three properties are not owned and must outlive this object.
    PropertyConditional(const std::string& name, const PROPERTY_TYPE& type, Property& conditionProperty,
                        const std::string& conditionValue, Property& propertyIfEqual, Property& propertyOtherwise);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// Throws what getValue() of the condition property and setValue() of the selected property throw.
    void setValue(const std::string& value) override;
    /// Unit and increment are those of the selected property; description and category go with the name.
    std::string getUnit() override;
    std::string getIncrement() override;

private:
    Property& selected();

    Property* m_ConditionProperty;
    std::string m_ConditionValue;
    Property* m_PropertyIfEqual;
    Property* m_PropertyOtherwise;
};

} // namespace CameraInterface
