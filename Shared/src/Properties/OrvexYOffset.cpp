// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexRegionProperties.h"

#include "PropertyNames.h"

namespace OrvexAdapter {

namespace PropertyNames = CameraInterface::PropertyNames;

OrvexYOffset::OrvexYOffset(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : OrvexRegionProperty(name, type, camera, {nullptr, PropertyNames::kMaximumHeight, &ORVEX_FRAME_FORMAT::yOffset},
                          QUILL_HERE) {}

} // namespace OrvexAdapter
