#pragma once

#include <string>

#include "Properties/OrvexSwitchProperty.h"

namespace OrvexAdapter {

/// Whether differences between the taps are corrected in software.
class OrvexTapCorrectionSW : public OrvexSwitchProperty {
public:
    OrvexTapCorrectionSW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

} // namespace OrvexAdapter
