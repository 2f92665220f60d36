// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"
#include "Properties/OrvexEnumProperty.h"
#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

/// An SDK property that shows one value: its limits and its default are the value.
class OrvexFixedProperty : public OrvexEnumProperty {
public:
    using OrvexEnumProperty::OrvexEnumProperty;
    using OrvexEnumProperty::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getDefault() override;
    std::vector<std::string> getValueList() override;

protected:
    /// What setValue() does: nothing, unless the camera would take the write.
    /// @throws KestrelException_Property "PropertyReadOnly"
    void refuseWrite(const KestrelExceptions::SourceLocation& here);

    std::vector<std::string> m_ValueList;
};

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
