// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexBooleanProperties.h"

namespace OrvexAdapter {

OrvexBooleanProperty::OrvexBooleanProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : BooleanProperty(name, type), m_Camera(&camera) {}

} // namespace OrvexAdapter
