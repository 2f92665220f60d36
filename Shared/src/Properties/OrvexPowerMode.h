// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Properties/OrvexEnumerations.h"
#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The power supply of the camera: "USB" or "Y-Cable". The camera keeps the setting; changes are not reported.
class OrvexPowerMode : public CameraInterface::Property {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexPowerMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    /// @throws KestrelException_Property "PropertyUnknown"
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// @throws KestrelException "PropertyValueConversion"  neither of the two texts
    /// @throws KestrelException_Property "PropertyUnknown"
    void setValue(const std::string& value) override;

private:
    OrvexCamera* m_Camera; // owns this property
    PowerModes m_ValueEnumeration;
};

} // namespace OrvexAdapter
