// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"
#include "Properties/OrvexEnumProperty.h"

namespace OrvexAdapter {

/// Number of the SDK's property whose flags are the two corrections.
constexpr std::uint32_t kSoftwareTapCorrectionFlag = 0x08000000;
constexpr std::uint32_t kHardwareTapCorrectionFlag = 0x20000000;

/// An on/off state that is one flag of an SDK property, off by default. Only a write shows whether the camera refuses a
/// change.
class OrvexSwitchProperty : public OrvexEnumProperty {
public:
    OrvexSwitchProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                        const unsigned long& propertyId, std::uint32_t flag);

    using OrvexEnumProperty::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    std::vector<std::string> getValueList() override;

protected:
    /// The present flags with this flag set or cleared.
    /// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  neither "Enabled" nor "Disabled"
    std::int32_t flagsFor(const std::string& state, const KestrelExceptions::SourceLocation& here);

    CameraInterface::States m_Enumeration;

private:
    std::uint32_t m_Flag;
    std::vector<std::string> m_ValueList;
};

/// Whether the camera controls its exposure automatically.
class OrvexAutoExposure : public OrvexSwitchProperty {
public:
    static constexpr unsigned long kNumber = 20;

    OrvexAutoExposure(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

/// The fan of a cooled camera: on if the value is not 0; a flag is set with it.
class OrvexFan : public OrvexSwitchProperty {
public:
    OrvexFan(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
             const unsigned long& propertyId);

    using OrvexSwitchProperty::operator=;

    std::string getValue() override;
    bool isReadOnly() override;
    void setValue(const std::string& value) override;
};

/// Whether the camera itself corrects differences between its taps.
class OrvexTapCorrectionHW : public OrvexSwitchProperty {
public:
    static constexpr unsigned long kNumber = 109;

    OrvexTapCorrectionHW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

/// Whether differences between the taps are corrected in software.
class OrvexTapCorrectionSW : public OrvexSwitchProperty {
public:
    static constexpr unsigned long kNumber = 109;

    OrvexTapCorrectionSW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexSwitchProperty::operator=;

    void setValue(const std::string& value) override;
};

} // namespace OrvexAdapter
