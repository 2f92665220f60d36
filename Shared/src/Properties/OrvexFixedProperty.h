#pragma once

#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"
#include "Properties/OrvexEnumProperty.h"

namespace OrvexAdapter {

/// An SDK property that shows one value: its limits and its default are the value.
class OrvexFixedProperty : public OrvexEnumProperty {
public:
    using OrvexEnumProperty::OrvexEnumProperty;
    using OrvexEnumProperty::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getDefault() override;
    std::vector<std::string> getValueList() override;

protected:
    /// What setValue() does: nothing, unless the camera would take the write.
    /// @throws KestrelException_Property "PropertyReadOnly"
    void refuseWrite(const KestrelExceptions::SourceLocation& here);

    std::vector<std::string> m_ValueList;
};

} // namespace OrvexAdapter
