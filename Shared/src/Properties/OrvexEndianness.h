#pragma once

#include <string>

#include "Properties/OrvexEnumerations.h"
#include "Properties/OrvexFixedProperty.h"

namespace OrvexAdapter {

/// The byte order of 16-bit pixels, which the camera tells in a flag of its colour format.
class OrvexEndianness : public OrvexFixedProperty {
public:
    OrvexEndianness(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexFixedProperty::operator=;

    std::string getValue() override;
    bool isReadOnly() override;
    void setValue(const std::string& value) override;

private:
    Endianness m_Enumeration;
};

} // namespace OrvexAdapter
