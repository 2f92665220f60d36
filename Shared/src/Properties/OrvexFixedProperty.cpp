// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFixedProperties.h"

#include "Exceptions/Raise.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

std::string OrvexFixedProperty::getMinimum() {
    return getValue();
}

std::string OrvexFixedProperty::getMaximum() {
    return getValue();
}

std::string OrvexFixedProperty::getDefault() {
    return getValue();
}

std::vector<std::string> OrvexFixedProperty::getValueList() {
    return m_ValueList;
}

void OrvexFixedProperty::refuseWrite(const KestrelExceptions::SourceLocation& here) {
    if (isWritable()) {
        raise<KestrelException_Property>(here, Errors::kPropertyReadOnly, getName());
    }
}

} // namespace OrvexAdapter
