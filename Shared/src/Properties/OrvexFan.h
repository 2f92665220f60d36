#pragma once

#include <string>

#include "Properties/OrvexSwitchProperty.h"

namespace OrvexAdapter {

/// The fan of a cooled camera: on when the value is not 0; a flag goes with it.
class OrvexFan : public OrvexSwitchProperty {
public:
    OrvexFan(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
             const unsigned long& propertyId);

    using OrvexSwitchProperty::operator=;

    std::string getValue() override;
    bool isReadOnly() override;
    void setValue(const std::string& value) override;
};

} // namespace OrvexAdapter
