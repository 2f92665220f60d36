// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexMemoryProperties.h"

namespace OrvexAdapter {

OrvexShutter::OrvexShutter(const std::string& name, const CameraInterface::PROPERTY_TYPE& type)
    : MemoryProperty<int>(name, type, 0, 0, 0, false, true, {}) {
    const ShutterTypes shutters;
    for (const std::string& text : shutters.getList()) {
        m_ValueEnumeration.insert(text, static_cast<int>(shutters.toValue(text)));
    }
    m_Maximum = m_ValueEnumeration.toValue("Rolling");
}

} // namespace OrvexAdapter
