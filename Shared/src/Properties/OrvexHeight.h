#pragma once

#include <string>

#include "Properties/OrvexRegionProperty.h"

namespace OrvexAdapter {

/// The height of the region.
class OrvexHeight : public OrvexRegionProperty {
public:
    OrvexHeight(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

} // namespace OrvexAdapter
