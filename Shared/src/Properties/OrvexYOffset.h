#pragma once

#include <string>

#include "Properties/OrvexRegionProperty.h"

namespace OrvexAdapter {

/// The first row of the region.
class OrvexYOffset : public OrvexRegionProperty {
public:
    OrvexYOffset(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

} // namespace OrvexAdapter
