// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexNumberedProperties.h"

#include <cstdint>

#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

/// The SDK's clock speeds are 8-bit numbers. A larger range is invalid.
constexpr std::int64_t kMaximumSpeeds = 256;

} // namespace

OrvexClockSpeed::OrvexClockSpeed(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                 OrvexCamera& camera, const unsigned long& propertyId)
    : OrvexNumberedProperty(name, type, camera, propertyId) {
    const float minimum = readMinimum();
    const float maximum = readMaximum();
    const std::int64_t first = truncate(minimum);
    const std::int64_t last = truncate(maximum);
    if (!fitsInteger(minimum) || !fitsInteger(maximum) || last - first >= kMaximumSpeeds) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
    for (std::int64_t clock = first; clock <= last; ++clock) {
        const auto number = static_cast<int>(clock);
        m_Enumeration.insert("Clock " + Base::toText(number), number);
    }
    m_ValueList = m_Enumeration.getList();
}

} // namespace OrvexAdapter
