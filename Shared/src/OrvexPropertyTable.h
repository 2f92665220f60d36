// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Makes a property. Returns null or throws if the camera does not have it: many cameras lack many of them, and an
/// exception takes as long as some calls of the SDK.
using PropertyFactory = std::unique_ptr<CameraInterface::Property> (*)(const std::string& name,
                                                                       const CameraInterface::PROPERTY_TYPE& type,
                                                                       OrvexCamera& camera,
                                                                       const unsigned long& number);

/// One property that an SDK camera may have.
struct PropertyDefinition {
    const char* m_Name;
    CameraInterface::PROPERTY_TYPE m_Type;
    std::uint32_t m_SdkProperty; ///< the SDK's number; 0xFFFFFFFF if the class needs none, or has its own
    PropertyFactory m_Factory;
};

using PropertyTable = PropertyDefinition[106];

/// Every property that an SDK camera may have. The order matters: properties that a constructor looks up in the camera
/// come before it.
const PropertyTable& getPropertyTable();

} // namespace OrvexAdapter
