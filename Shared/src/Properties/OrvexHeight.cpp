// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexRegionProperties.h"

#include "PropertyNames.h"

namespace OrvexAdapter {

namespace PropertyNames = CameraInterface::PropertyNames;

OrvexHeight::OrvexHeight(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : OrvexRegionProperty(name, type, camera,
                          {PropertyNames::kUnitHeight, PropertyNames::kMaximumHeight, &ORVEX_FRAME_FORMAT::height},
                          QUILL_HERE) {}

} // namespace OrvexAdapter
