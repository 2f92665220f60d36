// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexSwitchProperties.h"

namespace OrvexAdapter {

namespace {

constexpr std::uint32_t kFanOn = 0x80000000;

} // namespace

OrvexFan::OrvexFan(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                   const unsigned long& propertyId)
    : OrvexSwitchProperty(name, type, camera, propertyId, kFanOn) {}

std::string OrvexFan::getValue() {
    return m_Enumeration.toString(readValue() != 0.0F);
}

bool OrvexFan::isReadOnly() {
    return OrvexStandardProperty::isReadOnly(); // NOLINT(bugprone-parent-virtual-call): unlike the other switches
}

void OrvexFan::setValue(const std::string& value) {
    if (!isWritable()) {
        return;
    }
    const std::int32_t flags = flagsFor(value, QUILL_HERE);
    writeValue(m_Enumeration.toValue(value) ? 1.0F : 0.0F);
    writeFlags(flags);
}

} // namespace OrvexAdapter
