#include "Properties/OrvexClockSpeed.h"

#include <cstdint>

#include "Utilities/TextConversion.h"

namespace OrvexAdapter {

OrvexClockSpeed::OrvexClockSpeed(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                 OrvexCamera& camera, const unsigned long& propertyId)
    : OrvexNumberedProperty(name, type, camera, propertyId) {
    const std::int64_t last = truncate(readMaximum());
    for (std::int64_t clock = truncate(readMinimum()); clock <= last; ++clock) {
        const auto number = static_cast<int>(clock);
        m_Enumeration.insert("Clock " + Utilities::toText(number), number);
    }
    m_ValueList = m_Enumeration.getList();
}

} // namespace OrvexAdapter
