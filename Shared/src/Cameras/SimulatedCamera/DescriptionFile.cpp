// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/DescriptionFile.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <nlohmann/json.hpp>

#include "Base/FilePath.h"
#include "Base/NeverDestroyed.h"
#include "Cameras/SimulatedCamera/DescriptionParser.h"

namespace CameraInterface::SimulatedAdapter {

namespace {

using nlohmann::json;

/// Collects the records that @p read appends for each camera entry of the list file.
/// @param key the key that is read from the entries besides "Identification"
template <typename Record, typename Read>
std::vector<Record> loadFromCameras(const std::string& key, Read read) {
    std::vector<Record> records;
    const std::filesystem::path path = Base::filePath(getDescriptionFilePath());
    if (std::ifstream file(path); file.good()) {
        std::error_code noPlainFile;
        if (const auto size = std::filesystem::file_size(path, noPlainFile);
            !noPlainFile && size > kLargestDescriptionFile) {
            throw std::length_error("The camera list has more than " + std::to_string(kLargestDescriptionFile) +
                                    " bytes.");
        }
        visitCameras(
            file, key, [&](const json& camera) { read(camera, records); }, [&] { records.clear(); });
    }
    return records;
}

/// The entries of an array that the cameras with this serial number have under @p key, in order.
template <typename Description>
std::vector<Description> loadDescriptions(const std::string& serialNumber, const char* key) {
    return loadFromCameras<Description>(key, [&](const json& camera, std::vector<Description>& descriptions) {
        if (camera.at("Identification").at("Serial Number").get<std::string>() == serialNumber) {
            for (const json& entry : camera.at(key)) {
                descriptions.push_back(entry.get<Description>());
            }
        }
    });
}

/// Reads keys up to the first that is missing or wrong; values read before it are kept.
template <typename Read>
void readAsFarAsPossible(Read read) {
    try {
        read();
    } catch (const std::exception&) {
        // An incomplete entry keeps the values it has.
    }
}

void readDescriptors(const json& entries, std::vector<ParameterDescriptor>& descriptors) {
    static Base::NeverDestroyed<const ParameterTypes> types;
    for (const json& entry : entries) {
        ParameterDescriptor descriptor;
        descriptor.m_Type = types.get().toValue(entry.at("Type").get<std::string>());
        entry.at("Label").get_to(descriptor.m_Label);
        descriptors.push_back(std::move(descriptor));
    }
}

} // namespace

std::vector<SimulatedCameraIdentification> loadSimulatedCameraList() {
    using Identifications = std::vector<SimulatedCameraIdentification>;
    return loadFromCameras<SimulatedCameraIdentification>({}, [](const json& camera, Identifications& identifications) {
        identifications.push_back(camera.get<SimulatedCameraIdentification>());
    });
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
    static Base::NeverDestroyed<const PropertyTypes> types;
    readAsFarAsPossible([&] {
        value.at("Name").get_to(description.m_Name);
        description.m_Type = types.get().toValue(value.at("Type").get<std::string>());
        value.at("Minimum").get_to(description.m_Minimum);
        value.at("Maximum").get_to(description.m_Maximum);
        value.at("Default").get_to(description.m_Default);
        value.at("ReadOnly").get_to(description.m_ReadOnly);
        value.at("AvailableForWriting").get_to(description.m_AvailableForWriting);
        value.at("Discrete").get_to(description.m_Discrete);
        // All or nothing: a list with a wrong element leaves the description's list empty.
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
