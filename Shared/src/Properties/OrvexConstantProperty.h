#pragma once

#include <string>

#include "Properties/OrvexFixedProperty.h"

namespace OrvexAdapter {

/// A number that the camera does not change. The value that it had when the property was made is the only one with a
/// text.
class OrvexConstantProperty : public OrvexFixedProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  also for a value that is no number of 32 bits
    OrvexConstantProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId);

    using OrvexFixedProperty::operator=;

    std::string getValue() override;
    void setValue(const std::string& value) override;

private:
    CameraInterface::PropertyValueEnumeration<int> m_Enumeration;
};

} // namespace OrvexAdapter
