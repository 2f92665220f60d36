#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"
#include "Properties/OrvexEnumProperty.h"

namespace OrvexAdapter {

/// An on/off state that is one flag of an SDK property, off by default. The camera says only at the write that it
/// cannot be changed.
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
    /// The present flags with this one set or cleared.
    /// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  neither "Enabled" nor "Disabled"
    std::int32_t flagsFor(const std::string& state, const KestrelExceptions::SourceLocation& here);

    CameraInterface::States m_Enumeration;

private:
    std::uint32_t m_Flag;
    std::vector<std::string> m_ValueList;
};

} // namespace OrvexAdapter
