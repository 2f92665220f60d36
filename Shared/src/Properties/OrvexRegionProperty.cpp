// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexRegionProperties.h"

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Properties/OrvexFrameFormat.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexRegionProperty::OrvexRegionProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                         OrvexCamera& camera, const Definition& definition, const SourceLocation& here)
    : MemoryProperty<unsigned long>(name, type, 0, 0, 0, false, false, {}), m_Camera(&camera) {
    if (definition.minimumProperty != nullptr) {
        m_Minimum = Base::parseUnsigned(camera.getProperty(definition.minimumProperty).getValue());
    }
    m_Maximum = Base::parseUnsigned(camera.getProperty(definition.maximumProperty).getValue());
    m_Value = readFrameFormat(camera, *this, here).format.*definition.present;
    m_Default = m_Value;
}

void OrvexRegionProperty::setValue(const std::string& value) {
    const unsigned long number = Base::parseUnsigned(value);
    const std::string minimum = getMinimum();
    const std::string maximum = getMaximum();
    if (number > Base::parseUnsigned(maximum)) {
        MemoryProperty<unsigned long>::setValue(maximum);
    } else {
        MemoryProperty<unsigned long>::setValue(number < Base::parseUnsigned(minimum) ? minimum : value);
    }
}

} // namespace OrvexAdapter
