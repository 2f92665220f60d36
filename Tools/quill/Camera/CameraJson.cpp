// SPDX-License-Identifier: Apache-2.0

#include "Camera/CameraJson.h"

#include <array>

#include "Terminal/ToolError.h"

namespace QuillTool {

using CameraInterface::Camera;
using CameraInterface::CameraState;
using CameraInterface::PROPERTY_TYPE;
using CameraInterface::PropertyVisibility;

const char* stateName(CameraState state) {
    constexpr std::array kNames{"connected", "disconnected", "suspended"};
    return kNames.at(static_cast<std::size_t>(state));
}

std::string propertyTypeName(PROPERTY_TYPE type) {
    static const CameraInterface::PropertyTypes names;
    return names.toString(type);
}

const char* visibilityName(PropertyVisibility visibility) {
    constexpr std::array kNames{"Beginner", "Expert", "Guru", "Invisible"};
    return kNames.at(static_cast<std::size_t>(visibility));
}

Json listedCameraJson(const std::string& serialNumber, const std::string& modelName) {
    const char* state = "gone";
    const char* kind = getKindName(CameraInterface::CameraKind::Unknown);
    try {
        Camera& camera = Camera::getCamera(serialNumber);
        state = stateName(camera.getState());
        kind = getKindName(camera.getKind());
    } catch (const KestrelExceptions::KestrelException&) {
        // It has left since it was listed.
    }
    return {{"serialNumber", serialNumber}, {"modelName", modelName}, {"state", state}, {"kind", kind}};
}

Json enumerationFailuresJson() {
    Json failures = Json::array();
    for (const auto& [adapter, reason] : Camera::getEnumerationFailures()) {
        failures.push_back({{"adapter", adapter}, {"reason", readable(reason)}});
    }
    return failures;
}

Json toJson(const PropertyReading& reading) {
    return {{"name", reading.name},
            {"type", propertyTypeName(reading.type)},
            {"value", reading.value},
            {"default", reading.defaultValue},
            {"minimum", reading.minimum},
            {"maximum", reading.maximum},
            {"discrete", reading.discrete},
            {"choices", reading.choices},
            {"readOnly", reading.readOnly},
            {"availableForWriting", reading.availableForWriting},
            {"unit", reading.unit},
            {"increment", reading.increment},
            {"category", reading.category},
            {"description", reading.description},
            {"visibility", visibilityName(reading.visibility)}};
}

} // namespace QuillTool
