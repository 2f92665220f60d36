// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexNumberedProperties.h"

#include <algorithm>

namespace OrvexAdapter {

std::string OrvexTriggerMode::getMaximum() {
    constexpr int kLastMode = 1; // cameras may report more
    return m_Enumeration.toString(std::min(numberOf(readMaximum()), kLastMode));
}

int OrvexTriggerMode::numberOf(float value) const {
    return truncate(value) & 0xFF;
}

} // namespace OrvexAdapter
