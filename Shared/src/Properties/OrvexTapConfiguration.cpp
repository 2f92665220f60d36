// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexNumberedProperties.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"

namespace OrvexAdapter {

namespace {

/// The tap configurations of a sensor, most taps first, up to the largest number that it accepts.
std::vector<std::string> tapsUpTo(int maximum) {
    switch (maximum) {
    case 4:
        return {"Quad", "Dual", "Single"};
    case 1:
        return {"Dual", "Single"};
    default:
        return {"Single"};
    }
}

} // namespace

OrvexTapConfiguration::OrvexTapConfiguration(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                             OrvexCamera& camera, const unsigned long& propertyId)
    : OrvexNumberedProperty(name, type, camera, propertyId) {
    m_ValueList = tapsUpTo(truncate(readMaximum()));
}

bool OrvexTapConfiguration::isAvailableForWriting() {
    return !m_Camera->isStreaming();
}

} // namespace OrvexAdapter
