#pragma once

#include <string>
#include <vector>

#include "Properties/OrvexEnumerations.h"
#include "Properties/OrvexInformationProperty.h"

namespace OrvexAdapter {

/// What the camera is attached by, as read when the property was made.
class OrvexHardwareInterface : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexHardwareInterface(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
    /// The texts of all interfaces.
    std::vector<std::string> getValueList() override;

private:
    unsigned int m_Value = 0; // the SDK's number
    HardwareInterfaces m_ValueEnumeration;
};

} // namespace OrvexAdapter
