// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexBooleanProperties.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexHardwareTrigger::OrvexHardwareTrigger(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : OrvexBooleanProperty(name, type, camera) {
    if (!switchTrigger(false)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

void OrvexHardwareTrigger::setValue(const std::string& value) {
    const bool on = m_States.toValue(value);
    if (!switchTrigger(on)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
    m_Value = on;
}

void OrvexHardwareTrigger::restore() {
    if (m_Value && !switchTrigger(true)) {
        m_Value = false;
        onChange(true);
    }
}

bool OrvexHardwareTrigger::switchTrigger(bool on) {
    return orvexApi().sdkSetHardwareTrigger(m_Camera->getHandle(), on ? 1 : 0) != 0;
}

} // namespace OrvexAdapter
