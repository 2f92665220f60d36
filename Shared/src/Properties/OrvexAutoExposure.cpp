// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexSwitchProperties.h"

namespace OrvexAdapter {

namespace {

constexpr std::uint32_t kOn = 0x40000000;

} // namespace

OrvexAutoExposure::OrvexAutoExposure(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                     OrvexCamera& camera)
    : OrvexSwitchProperty(name, type, camera, kNumber, kOn) {}

void OrvexAutoExposure::setValue(const std::string& value) {
    writeFlags(flagsFor(value, QUILL_HERE));
}

} // namespace OrvexAdapter
