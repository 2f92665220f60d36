#pragma once

#include <string>

#include "Properties/OrvexInformationProperty.h"

namespace OrvexAdapter {

/// The version of the camera's FPGA; "0.0" where there is none.
class OrvexFpgaVersion : public OrvexInformationProperty {
public:
    using OrvexInformationProperty::OrvexInformationProperty;
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

} // namespace OrvexAdapter
