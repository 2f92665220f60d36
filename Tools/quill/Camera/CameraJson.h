// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <Quill.h>

#include "Camera/PropertyAccess.h"
#include "Terminal/Output.h"

namespace QuillTool {

/// Returns "connected", "disconnected" or "suspended".
const char* stateName(CameraInterface::CameraState state);
/// Returns "Integer", "Float", "Boolean" or "String".
std::string propertyTypeName(CameraInterface::PROPERTY_TYPE type);
/// Returns "Beginner", "Expert", "Guru" or "Invisible".
const char* visibilityName(CameraInterface::PropertyVisibility visibility);

/// What a list of cameras says of one: serialNumber, modelName, state and kind. A camera that has just left is "gone".
Json listedCameraJson(const std::string& serialNumber, const std::string& modelName);
/// The kinds of camera that the last enumeration could not list: adapter and reason of each.
Json enumerationFailuresJson();
Json toJson(const PropertyReading& reading);

} // namespace QuillTool
