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
    const auto entry = [&](const char* state, CameraInterface::CameraKind kind) {
        return Json{
            {"serialNumber", serialNumber}, {"modelName", modelName}, {"state", state}, {"kind", getKindName(kind)}};
    };
    try {
        Camera& camera = Camera::getCamera(serialNumber);
        return entry(stateName(camera.getState()), camera.getKind());
    } catch (const KestrelExceptions::KestrelException&) {
        return entry("gone", CameraInterface::CameraKind::Unknown); // since it was listed
    }
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
