#pragma once

#include <string>

#include "Properties/OrvexEnumerations.h"
#include "Properties/OrvexFixedProperty.h"

namespace OrvexAdapter {

/// The colour filter layout of the sensor, on cameras that have an FPGA.
class OrvexColorFormat : public OrvexFixedProperty {
public:
    OrvexColorFormat(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                     const unsigned long& propertyId);

    using OrvexFixedProperty::operator=;

    std::string getValue() override;
    bool isReadOnly() override;
    void setValue(const std::string& value) override;

private:
    ColorFormats m_Enumeration;
};

} // namespace OrvexAdapter
