// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFixedProperties.h"

#include "Base/TextPieces.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Properties/Truncation.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexColorFormat::OrvexColorFormat(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                   OrvexCamera& camera, const unsigned long& propertyId)
    : OrvexFixedProperty(name, type, camera, propertyId) {
    ORVEX_VERSION version{};
    const bool known = orvexApi().sdkQueryVersion(camera.getHandle(), &version) != 0;
    if (!known || Base::dottedBytes(version.fpga, 2) == "0.0") {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
    m_ValueList = {OrvexColorFormat::getValue()};
}

std::string OrvexColorFormat::getValue() {
    return m_Enumeration.toString(truncate(readValue()));
}

bool OrvexColorFormat::isReadOnly() {
    return true;
}

void OrvexColorFormat::setValue(const std::string& /*value*/) {
    refuseWrite(QUILL_HERE);
}

} // namespace OrvexAdapter
