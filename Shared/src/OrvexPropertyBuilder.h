// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Makes the properties of an SDK camera: those in the table that the camera has, which their constructors check.
///
/// Properties are never removed: a camera that is connected again keeps its objects, which get the handle from the
/// camera at every call.
class OrvexPropertyBuilder {
public:
    using Property = CameraInterface::Property;
    using PROPERTY_TYPE = CameraInterface::PROPERTY_TYPE;
    using Properties = std::map<std::string, std::unique_ptr<Property>>;

    /// Fills the property map of an open camera, in the order of the table, and links properties that depend on each
    /// other. Omits a property whose constructor throws a KestrelException; any other exception passes through and ends
    /// the building.
    /// @param properties the camera's own map: later properties look earlier ones up in the camera
    static void build(Properties& properties, OrvexCamera& camera);
    /// Restores the hardware trigger of an earlier connection, which building has switched off. If that fails, runs a
    /// callback of the application; call it therefore without a lock.
    static void restoreTrigger(const Properties& properties);
    /// Links the pairs of which the camera has both, and the streaming mode to the properties that depend on it.
    static void linkProperties(Properties& properties);
    static void linkBothWays(Property& a, Property& b);

    // Factories of the table, besides those of the classes. They do not use the number of the SDK's property.
    static std::unique_ptr<Property> makeSerialNumber(const std::string& name, const PROPERTY_TYPE& type,
                                                      OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeCameraId(const std::string& name, const PROPERTY_TYPE& type,
                                                  OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeModelName(const std::string& name, const PROPERTY_TYPE& type,
                                                   OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeVendorName(const std::string& name, const PROPERTY_TYPE& type,
                                                    OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeHardwareRevision(const std::string& name, const PROPERTY_TYPE& type,
                                                          OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeDriverVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                       OrvexCamera& camera, const unsigned long& number);
    static std::unique_ptr<Property> makeApiVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                    OrvexCamera& camera, const unsigned long& number);
    /// Makes a property that stands for a video property while the streaming mode is "Video", otherwise for a still
    /// property; the name selects the two.
    /// @throws KestrelException_Property "PropertyUnsupported"  one of the two is missing
    /// @throws KestrelException_PropertyComparison "PropertyTypeMismatch"
    static std::unique_ptr<Property> makeConditional(const std::string& name, const PROPERTY_TYPE& type,
                                                     OrvexCamera& camera, const unsigned long& number);
};

} // namespace OrvexAdapter
