#pragma once

#include <string>

#include "Properties/OrvexInformationProperty.h"

namespace OrvexAdapter {

/// The version of the timing file of the analogue front end, "0.0" while none is stored. Only two models have one.
class OrvexAfeTimingVersion : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexAfeTimingVersion(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

} // namespace OrvexAdapter
