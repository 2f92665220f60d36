// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Properties/OrvexEnumerations.h"
#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// A text that describes the camera; never writable. Its limits and its default are the value.
class OrvexInformationProperty : public CameraInterface::Property {
public:
    OrvexInformationProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// Ignored.
    void setValue(const std::string& value) override;

protected:
    OrvexCamera* m_Camera; // owns this property
};

/// The version of the camera's firmware.
class OrvexFirmwareVersion : public OrvexInformationProperty {
public:
    using OrvexInformationProperty::OrvexInformationProperty;
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

/// The version of the camera's FPGA; "0.0" if there is none.
class OrvexFpgaVersion : public OrvexInformationProperty {
public:
    using OrvexInformationProperty::OrvexInformationProperty;
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

/// The version of the second FPGA.
class OrvexFpga2Version : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexFpga2Version(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
};

/// The version of the timing file of the analogue front end, "0.0" while none is stored. Only two models have one.
class OrvexAfeTimingVersion : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexAfeTimingVersion(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    /// Makes the property as the constructor does; returns null instead of throwing.
    static std::unique_ptr<CameraInterface::Property> makeIfPresent(const std::string& name,
                                                                    const CameraInterface::PROPERTY_TYPE& type,
                                                                    OrvexCamera& camera, const unsigned long& number);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;

private:
    /// Chooses the constructor that asks nothing of the camera.
    struct Unasked {};
    OrvexAfeTimingVersion(Unasked unasked, const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                          OrvexCamera& camera);
};

/// The interface that connects the camera, as read at construction.
class OrvexHardwareInterface : public OrvexInformationProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexHardwareInterface(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);
    using OrvexInformationProperty::operator=;

    std::string getValue() override;
    /// The texts of all interfaces.
    std::vector<std::string> getValueList() override;

private:
    unsigned int m_Value = 0; // the SDK's number
    HardwareInterfaces m_ValueEnumeration;
};

} // namespace OrvexAdapter
