// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexSwitchProperties.h"

#include "Exceptions/Raise.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexSwitchProperty::OrvexSwitchProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                         OrvexCamera& camera, const unsigned long& propertyId, std::uint32_t flag)
    : OrvexEnumProperty(name, type, camera, propertyId), m_Flag(flag), m_ValueList(m_Enumeration.getList()) {}

std::string OrvexSwitchProperty::getMinimum() {
    return m_Enumeration.toString(false);
}

std::string OrvexSwitchProperty::getMaximum() {
    return m_Enumeration.toString(true);
}

std::string OrvexSwitchProperty::getValue() {
    return m_Enumeration.toString((static_cast<std::uint32_t>(readFlags()) & m_Flag) != 0);
}

std::string OrvexSwitchProperty::getDefault() {
    return m_Enumeration.toString(false);
}

bool OrvexSwitchProperty::isReadOnly() {
    return false;
}

std::vector<std::string> OrvexSwitchProperty::getValueList() {
    return m_ValueList;
}

std::int32_t OrvexSwitchProperty::flagsFor(const std::string& state, const SourceLocation& here) {
    const auto flags = static_cast<std::uint32_t>(readFlags());
    if (state == m_Enumeration.toString(true)) {
        return static_cast<std::int32_t>(flags | m_Flag);
    }
    if (state == m_Enumeration.toString(false)) {
        return static_cast<std::int32_t>(flags & ~m_Flag);
    }
    raise<KestrelException_InvalidArgument>(here, Errors::kArgumentUnhandled, "value");
}

} // namespace OrvexAdapter
