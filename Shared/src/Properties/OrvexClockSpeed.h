#pragma once

#include <string>

#include "Properties/OrvexNumberedProperty.h"

namespace OrvexAdapter {

/// A clock of the sensor: "Clock 0", "Clock 1" and so on, as far as its range went when the property was made.
class OrvexClockSpeed : public OrvexNumberedProperty<CameraInterface::PropertyValueEnumeration<int>> {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  also for a range that cannot be one of clocks
    OrvexClockSpeed(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                    const unsigned long& propertyId);

    using OrvexNumberedProperty::operator=;
};

} // namespace OrvexAdapter
