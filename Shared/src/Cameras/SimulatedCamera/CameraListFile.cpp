#include "Cameras/SimulatedCamera/CameraListFile.h"

#include <exception>
#include <fstream>

#include <nlohmann/json.hpp>

#include "Internal/NeverDestroyed.h"

namespace CameraInterface::SimulatedAdapter {

namespace {

using nlohmann::json;

/// Calls @p visit with each camera entry of the list file.
template <typename Visit>
void forEachCamera(Visit visit) {
    std::ifstream file(getCameraListPath());
    if (!file.good()) {
        return;
    }
    json document;
    file >> document;
    if (const auto cameras = document.find("Cameras"); cameras != document.end()) {
        for (const json& camera : *cameras) {
            visit(camera);
        }
    }
}

/// The entries of an array that the cameras with this serial number have under @p key, in order.
template <typename Description>
std::vector<Description> loadDescriptions(const std::string& serialNumber, const char* key) {
    std::vector<Description> descriptions;
    forEachCamera([&](const json& camera) {
        if (camera.at("Identification").at("Serial Number").get<std::string>() == serialNumber) {
            for (const json& entry : camera.at(key)) {
                descriptions.push_back(entry.get<Description>());
            }
        }
    });
    return descriptions;
}

/// Reads keys until the first one that is missing or wrong; what was read before it stays.
template <typename Read>
void readAsFarAsPossible(Read read) {
    try {
        read();
    } catch (const std::exception&) {
        // An incomplete entry is taken for what it has.
    }
}

void readDescriptors(const json& entries, std::vector<ParameterDescriptor>& descriptors) {
    static Internal::NeverDestroyed<const ParameterTypes> types;
    for (const json& entry : entries) {
        ParameterDescriptor descriptor;
        descriptor.m_Type = types.get().toValue(entry.at("Type").get<std::string>());
        entry.at("Label").get_to(descriptor.m_Label);
        descriptors.push_back(std::move(descriptor));
    }
}

} // namespace

std::vector<SimulatedCameraIdentification> loadSimulatedCameraList() {
    std::vector<SimulatedCameraIdentification> identifications;
    forEachCamera([&](const json& camera) { identifications.push_back(camera.get<SimulatedCameraIdentification>()); });
    return identifications;
}

std::vector<SimulatedPropertyDescription> loadPropertyDescriptions(const std::string& serialNumber) {
    return loadDescriptions<SimulatedPropertyDescription>(serialNumber, "Properties");
}

std::vector<SimulatedFunctionDescription> loadFunctionDescriptions(const std::string& serialNumber) {
    return loadDescriptions<SimulatedFunctionDescription>(serialNumber, "Functions");
}

void from_json(const json& value, SimulatedCameraIdentification& identification) {
    readAsFarAsPossible([&] {
        value.at("Identification").at("Model Name").get_to(identification.m_ModelName);
        value.at("Identification").at("Serial Number").get_to(identification.m_SerialNumber);
    });
}

void from_json(const json& value, SimulatedPropertyDescription& description) {
    static Internal::NeverDestroyed<const PropertyTypes> types;
    readAsFarAsPossible([&] {
        value.at("Name").get_to(description.m_Name);
        description.m_Type = types.get().toValue(value.at("Type").get<std::string>());
        value.at("Minimum").get_to(description.m_Minimum);
        value.at("Maximum").get_to(description.m_Maximum);
        value.at("Default").get_to(description.m_Default);
        value.at("ReadOnly").get_to(description.m_ReadOnly);
        value.at("AvailableForWriting").get_to(description.m_AvailableForWriting);
        value.at("Discrete").get_to(description.m_Discrete);
        // Taken whole: a list with a wrong element leaves the description's own empty.
        description.m_ValueList = value.at("ValueList").get<std::vector<std::string>>();
    });
}

void from_json(const json& value, SimulatedFunctionDescription& description) {
    readAsFarAsPossible([&] {
        value.at("Name").get_to(description.m_Name);
        readDescriptors(value.at("Parameters"), description.m_Parameters);
        readDescriptors(value.at("Return Format"), description.m_ReturnFormat);
    });
}

} // namespace CameraInterface::SimulatedAdapter
