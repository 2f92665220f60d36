#pragma once

#include <string>

#include "Properties/OrvexInformationProperty.h"

namespace OrvexAdapter {

/// The version of the second FPGA.
class OrvexFpga2Version : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexFpga2Version(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

} // namespace OrvexAdapter
