// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFixedProperties.h"

#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"
#include "Properties/Truncation.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

/// Whether the text can be parsed as a 32-bit number, signed or unsigned.
bool hasNumber(float value) {
    return fitsInteger(value) || (value > 0 && value < 4294967296.0F);
}

} // namespace

OrvexConstantProperty::OrvexConstantProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                             OrvexCamera& camera, const unsigned long& propertyId)
    : OrvexFixedProperty(name, type, camera, propertyId) {
    const float value = readValue();
    if (!hasNumber(value)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
    m_Enumeration.insert(Base::toSixDecimals(value), truncate(value));
    m_ValueList = m_Enumeration.getList();
}

std::string OrvexConstantProperty::getValue() {
    return m_Enumeration.toString(truncate(readValue()));
}

void OrvexConstantProperty::setValue(const std::string& /*value*/) {
    refuseWrite(QUILL_HERE);
}

} // namespace OrvexAdapter
