#pragma once

#include <string>

#include "Properties/OrvexNumberedProperty.h"

namespace OrvexAdapter {

/// The taps that a sensor is read out through. Can be changed only while the camera is not streaming.
class OrvexTapConfiguration : public OrvexNumberedProperty<TapConfigurations> {
public:
    OrvexTapConfiguration(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId);

    using OrvexNumberedProperty::operator=;

    bool isAvailableForWriting() override;
};

} // namespace OrvexAdapter
