// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "Functions/Function.h"
#include "PropertyValueEnumerations.h"

namespace CameraInterface::SimulatedAdapter {

/// The identification of a simulated camera.
struct SimulatedCameraIdentification {
    std::string m_ModelName;
    std::string m_SerialNumber;
};

/// A property of a simulated camera, as its list describes it.
struct SimulatedPropertyDescription {
    std::string m_Name;
    PROPERTY_TYPE m_Type = PROPERTY_TYPE::String;
    std::string m_Minimum;
    std::string m_Maximum;
    std::string m_Default;
    bool m_ReadOnly = false;
    bool m_AvailableForWriting = false;
    bool m_Discrete = false;
    std::vector<std::string> m_ValueList;
};

/// A function of a simulated camera, as its list describes it.
struct SimulatedFunctionDescription {
    std::string m_Name;
    std::vector<ParameterDescriptor> m_Parameters;
    std::vector<ParameterDescriptor> m_ReturnFormat;
};

/// The full path of the camera list, fixed when the library is built.
std::string getDescriptionFilePath();

// Each loader reads the camera list again. If the file is missing or lists no cameras, the result is empty. A file that
// is not JSON throws the JSON library's exception; a list beyond the limits of DescriptionParser.h throws
// std::length_error. An incomplete entry keeps the values before the first key that is missing or wrong.

/// Every camera of the list, in its order.
std::vector<SimulatedCameraIdentification> loadSimulatedCameraList();
/// The properties of every camera entry with this serial number.
/// @throws nlohmann::json::exception  also if an entry has no serial number, or a matching entry no "Properties"
std::vector<SimulatedPropertyDescription> loadPropertyDescriptions(const std::string& serialNumber);
/// The functions of every camera entry with this serial number. Throws what loadPropertyDescriptions() throws.
std::vector<SimulatedFunctionDescription> loadFunctionDescriptions(const std::string& serialNumber);

void from_json(const nlohmann::json& value, SimulatedCameraIdentification& identification);
void from_json(const nlohmann::json& value, SimulatedPropertyDescription& description);
void from_json(const nlohmann::json& value, SimulatedFunctionDescription& description);

} // namespace CameraInterface::SimulatedAdapter
