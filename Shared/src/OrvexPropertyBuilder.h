// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Makes the properties of an SDK camera: every one in the table whose constructor finds it on the camera.
///
/// Nothing is ever removed: a camera that is connected again keeps the objects that it has, which take the handle from
/// the camera at every call.
class OrvexPropertyBuilder {
public:
    using Property = CameraInterface::Property;
    using PROPERTY_TYPE = CameraInterface::PROPERTY_TYPE;
    using Properties = std::map<std::string, std::unique_ptr<Property>>;

    /// Fills the property map of an open camera, in the order of the table, and links what depends on each other. A
    /// property that refuses to be made with a KestrelException is left out; anything else passes, and ends the
    /// building.
    /// @param properties the camera's own map: later properties look earlier ones up in the camera
    static void build(Properties& properties, OrvexCamera& camera);
    /// Has the hardware trigger go on as it was in an earlier connection; building has switched it off. Tells the
    /// application where that fails, and is therefore called without a lock.
    static void restoreTrigger(const Properties& properties);
    /// Links the pairs of which both are there.
    static void linkProperties(Properties& properties);
    static void linkBothWays(Property& a, Property& b);

    // Factories of the table, beside those of the classes themselves. The number is the SDK's; these need none.
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
    /// What stands for a video property while the streaming mode is "Video" and for a still property otherwise; the
    /// name says for which.
    /// @throws KestrelException_Property "PropertyUnsupported"  one of the two is missing
    /// @throws KestrelException_PropertyComparison "PropertyTypeMismatch"
    static std::unique_ptr<Property> makeConditional(const std::string& name, const PROPERTY_TYPE& type,
                                                     OrvexCamera& camera, const unsigned long& number);
};

} // namespace OrvexAdapter
