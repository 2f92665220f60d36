#pragma once

#include <string>

#include "Properties/OrvexSwitchProperty.h"

namespace OrvexAdapter {

/// Whether the camera itself corrects differences between its taps.
class OrvexTapCorrectionHW : public OrvexSwitchProperty {
public:
    OrvexTapCorrectionHW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

} // namespace OrvexAdapter
