// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CameraInfo.h"

#include <array>
#include <exception>

#include "PropertyNames.h"

namespace CameraInterface {

namespace {

using namespace CameraInterface;

constexpr std::array kDescriptiveProperties{
    PropertyNames::kVendorName,        PropertyNames::kModelName,     PropertyNames::kCameraId,
    PropertyNames::kSerialNumber,      PropertyNames::kColorFormat,   PropertyNames::kHardwareRevision,
    PropertyNames::kHardwareInterface, PropertyNames::kFpgaVersion,   PropertyNames::kFpga2Version,
    PropertyNames::kFirmwareVersion,   PropertyNames::kDriverVersion, PropertyNames::kApiVersion,
    PropertyNames::kMaximumHeight,     PropertyNames::kMaximumWidth,  PropertyNames::kPowerMode,
    PropertyNames::kUsb3VisionMode,
};
static_assert(kDescriptiveProperties.size() == 16);

} // namespace

std::map<std::string, std::string> collectCameraInfo(Camera& camera) {
    std::map<std::string, std::string> info;
    for (const char* name : kDescriptiveProperties) {
        try {
            Property& property = camera.getProperty(name);
            info[property.getName()] = property.getValue();
        } catch (const std::exception&) {
            // The other properties are still worth reading.
        }
    }
    return info;
}

} // namespace CameraInterface
