// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexHardwareInterface::OrvexHardwareInterface(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                               OrvexCamera& camera)
    : OrvexInformationProperty(name, type, camera) {
    if (orvexApi().sdkGetHardwareInterface(camera.getHandle(), &m_Value) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexHardwareInterface::getValue() {
    return m_ValueEnumeration.toString(static_cast<int>(m_Value));
}

std::vector<std::string> OrvexHardwareInterface::getValueList() {
    return m_ValueEnumeration.getList();
}

} // namespace OrvexAdapter
