#pragma once

#include <string>

#include "Properties/OrvexInformationProperty.h"

namespace OrvexAdapter {

/// The version of the camera's firmware.
class OrvexFirmwareVersion : public OrvexInformationProperty {
public:
    using OrvexInformationProperty::OrvexInformationProperty;
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

} // namespace OrvexAdapter
