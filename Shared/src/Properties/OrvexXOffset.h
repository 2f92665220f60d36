#pragma once

#include <string>

#include "Properties/OrvexRegionProperty.h"

namespace OrvexAdapter {

/// The first column of the region.
class OrvexXOffset : public OrvexRegionProperty {
public:
    OrvexXOffset(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

} // namespace OrvexAdapter
