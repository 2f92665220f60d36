// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "Functions/Function.h"
#include "PropertyValueEnumerations.h"

namespace CameraInterface::SimulatedAdapter {

/// Who a simulated camera is.
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

// Each loader reads the camera list anew. Without such a file, or without cameras in it, the result is empty; what is
// no JSON ends in the JSON library's exception, a list beyond the limits of DescriptionParser.h in std::length_error.
// An entry that is incomplete keeps what was read of it before the first
// key that is missing or wrong.

/// Every camera of the list, in its order.
std::vector<SimulatedCameraIdentification> loadSimulatedCameraList();
/// The properties of every camera entry with this serial number.
/// @throws nlohmann::json::exception  also where an entry has no serial number, or a matching one no "Properties"
std::vector<SimulatedPropertyDescription> loadPropertyDescriptions(const std::string& serialNumber);
/// The functions of every camera entry with this serial number. Throws like loadPropertyDescriptions().
std::vector<SimulatedFunctionDescription> loadFunctionDescriptions(const std::string& serialNumber);

void from_json(const nlohmann::json& value, SimulatedCameraIdentification& identification);
void from_json(const nlohmann::json& value, SimulatedPropertyDescription& description);
void from_json(const nlohmann::json& value, SimulatedFunctionDescription& description);

} // namespace CameraInterface::SimulatedAdapter
