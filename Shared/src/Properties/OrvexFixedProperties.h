// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"
#include "Properties/OrvexEnumProperty.h"
#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

/// An SDK property with one value, which is also its limits and its default.
class OrvexFixedProperty : public OrvexEnumProperty {
public:
    using OrvexEnumProperty::OrvexEnumProperty;
    using OrvexEnumProperty::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getDefault() override;
    std::vector<std::string> getValueList() override;

protected:
    /// Implements setValue(): does nothing, unless the camera would accept the write.
    /// @throws KestrelException_Property "PropertyReadOnly"
    void refuseWrite(const KestrelExceptions::SourceLocation& here);

    std::vector<std::string> m_ValueList;
};

/// A number that the camera does not change. Only the value at construction has a text.
class OrvexConstantProperty : public OrvexFixedProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  also if the value is not a 32-bit number
    OrvexConstantProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId);

    using OrvexFixedProperty::operator=;

    std::string getValue() override;
    void setValue(const std::string& value) override;

private:
    CameraInterface::PropertyValueEnumeration<int> m_Enumeration;
};

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

/// The byte order of 16-bit pixels, which the camera reports in a flag of its colour format.
class OrvexEndianness : public OrvexFixedProperty {
public:
    static constexpr unsigned long kNumber = 80;

    OrvexEndianness(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexFixedProperty::operator=;

    std::string getValue() override;
    bool isReadOnly() override;
    void setValue(const std::string& value) override;

private:
    Endianness m_Enumeration;
};

} // namespace OrvexAdapter
