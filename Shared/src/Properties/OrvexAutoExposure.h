#pragma once

#include <string>

#include "Properties/OrvexSwitchProperty.h"

namespace OrvexAdapter {

/// Whether the camera sets its exposure itself.
class OrvexAutoExposure : public OrvexSwitchProperty {
public:
    OrvexAutoExposure(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

} // namespace OrvexAdapter
