// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Properties/OrvexEnumProperty.h"
#include "Properties/OrvexEnumerations.h"
#include "Properties/Truncation.h"

namespace OrvexAdapter {

/// An SDK property whose number is one of an enumeration's values.
///
/// Reading throws KestrelException "PropertyValueConversion" for a number that the enumeration lacks; setValue() throws
/// it for such a text.
template <typename Enumeration>
class OrvexNumberedProperty : public OrvexEnumProperty {
public:
    OrvexNumberedProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId)
        : OrvexEnumProperty(name, type, camera, propertyId), m_ValueList(m_Enumeration.getList()) {}

    using OrvexEnumProperty::operator=;

    std::string getMinimum() override { return textOf(readMinimum()); }
    std::string getMaximum() override { return textOf(readMaximum()); }
    std::string getValue() override { return textOf(readValue()); }
    std::string getDefault() override { return textOf(readDefault()); }
    std::vector<std::string> getValueList() override { return m_ValueList; }
    void setValue(const std::string& value) override {
        if (isWritable()) {
            writeValue(static_cast<float>(m_Enumeration.toValue(value)));
        }
    }

protected:
    /// The number that a value of the SDK represents.
    virtual int numberOf(float value) const { return truncate(value); }
    std::string textOf(float value) const { return m_Enumeration.toString(numberOf(value)); }

    Enumeration m_Enumeration;
    std::vector<std::string> m_ValueList;
};

using OrvexCorrectionMatrix = OrvexNumberedProperty<CorrectionMatrices>;
using OrvexDemosaicMethod = OrvexNumberedProperty<DemosaicMethods>;
using OrvexFlipping = OrvexNumberedProperty<FlippingOptions>;

/// A clock of the sensor: "Clock 0", "Clock 1" and so on, up to its maximum at construction.
class OrvexClockSpeed : public OrvexNumberedProperty<CameraInterface::PropertyValueEnumeration<int>> {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  also if the range is impossible
    OrvexClockSpeed(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                    const unsigned long& propertyId);

    using OrvexNumberedProperty::operator=;
};

/// The taps through which the sensor is read out. Can be changed only while the camera is not streaming.
class OrvexTapConfiguration : public OrvexNumberedProperty<TapConfigurations> {
public:
    OrvexTapConfiguration(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId);

    using OrvexNumberedProperty::operator=;

    bool isAvailableForWriting() override;
};

/// The exposure timing of a trigger. Only the low byte of the SDK's number is the mode.
class OrvexTriggerMode : public OrvexNumberedProperty<TriggerModes> {
public:
    using OrvexNumberedProperty::OrvexNumberedProperty;
    using OrvexNumberedProperty::operator=;

    std::string getMaximum() override;

protected:
    int numberOf(float value) const override;
};

} // namespace OrvexAdapter
