#pragma once

#include <string>

#include "Properties/OrvexRegionProperty.h"

namespace OrvexAdapter {

/// The width of the region.
class OrvexWidth : public OrvexRegionProperty {
public:
    OrvexWidth(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

} // namespace OrvexAdapter
