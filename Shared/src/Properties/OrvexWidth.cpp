// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexRegionProperties.h"

#include "PropertyNames.h"

namespace OrvexAdapter {

namespace PropertyNames = CameraInterface::PropertyNames;

OrvexWidth::OrvexWidth(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : OrvexRegionProperty(name, type, camera,
                          {PropertyNames::kUnitWidth, PropertyNames::kMaximumWidth, &ORVEX_FRAME_FORMAT::width},
                          QUILL_HERE) {}

} // namespace OrvexAdapter
