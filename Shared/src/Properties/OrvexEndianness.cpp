// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFixedProperties.h"

#include <cstdint>

namespace OrvexAdapter {

namespace {

constexpr std::uint32_t kLittleEndian = 0x80000000U;

} // namespace

OrvexEndianness::OrvexEndianness(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                 OrvexCamera& camera)
    : OrvexFixedProperty(name, type, camera, kNumber) {
    m_ValueList = {OrvexEndianness::getValue()};
}

std::string OrvexEndianness::getValue() {
    return m_Enumeration.toString((static_cast<std::uint32_t>(readFlags()) & kLittleEndian) != 0);
}

bool OrvexEndianness::isReadOnly() {
    return true;
}

void OrvexEndianness::setValue(const std::string& /*value*/) {
    refuseWrite(QUILL_HERE);
}

} // namespace OrvexAdapter
