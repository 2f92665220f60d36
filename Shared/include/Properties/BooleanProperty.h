// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "../Export.h"
#include "Property.h"

namespace CameraInterface {

/// An on/off property, "Enabled" or "Disabled"; initially off.
class QUILL_API BooleanProperty : public Property {
public:
    BooleanProperty(const std::string& name, const PROPERTY_TYPE& type);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    /// The opposite of isReadOnly().
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// Stores the state. Does not notify linked properties or callbacks.
    /// @throws KestrelException "PropertyValueConversion"  neither "Enabled" nor "Disabled"
    void setValue(const std::string& value) override;

protected:
    bool m_Value = false;
    States m_States;
};

} // namespace CameraInterface
