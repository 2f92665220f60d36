// SPDX-License-Identifier: Apache-2.0

// Lists of simulated cameras, from the file to the properties and functions of connected cameras.

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/Input.h"

namespace {

using namespace CameraInterface;
using namespace CameraInterface::SimulatedAdapter;
using namespace Fuzzing;
using KestrelExceptions::KestrelException;
using Json = nlohmann::json;
using JsonException = Json::exception;

/// A file in memory.
class MemoryFile {
public:
    static MemoryFile& instance() {
        static MemoryFile file;
        return file;
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_Descriptor); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_Descriptor); }

    void fill(const std::uint8_t* data, std::size_t size) const {
        require(ftruncate(m_Descriptor, 0) == 0 && pwrite(m_Descriptor, data, size, 0) == static_cast<ssize_t>(size),
                "the list can be written");
    }

private:
    MemoryFile() : m_Descriptor(memfd_create("camera-list", MFD_CLOEXEC)) {
        require(m_Descriptor >= 0, "there are files in memory");
    }

    const int m_Descriptor;
};

/// The cameras that a document lists, read as a whole.
Json readCameras(const std::uint8_t* data, std::size_t size) {
    // As far as the first value goes: the rest of the file is not read.
    const std::string text(data, data + size);
    std::istringstream stream(text);
    Json document;
    stream >> document;
    const auto cameras = document.find("Cameras");
    return cameras == document.end() ? Json::array() : *cameras;
}

// An entry as it is read up to the first key that is missing or has a value of another kind.

bool read(const Json& entry, const char* key, std::string& text) {
    const bool isThere = entry.is_object() && entry.contains(key) && entry[key].is_string();
    text = isThere ? entry[key].get<std::string>() : text;
    return isThere;
}

bool read(const Json& entry, const char* key, bool& flag) {
    const bool isThere = entry.contains(key) && entry[key].is_boolean();
    flag = isThere ? entry[key].get<bool>() : flag;
    return isThere;
}

template <typename Type>
bool read(const Json& entry, const std::map<std::string, Type>& words, Type& type) {
    std::string word;
    const bool isThere = read(entry, "Type", word) && words.count(word) != 0;
    type = isThere ? words.at(word) : type;
    return isThere;
}

bool read(const Json& entry, const char* key, std::vector<std::string>& texts) {
    if (!entry.contains(key) || !entry[key].is_array() ||
        !std::all_of(entry[key].begin(), entry[key].end(), [](const Json& text) { return text.is_string(); })) {
        return false;
    }
    texts = entry[key].get<std::vector<std::string>>();
    return true;
}

bool read(const Json& entry, const char* key, std::vector<ParameterDescriptor>& descriptors) {
    static const std::map<std::string, PARAMETER_TYPE> words{{"Integer", PARAMETER_TYPE::Integer},
                                                             {"String", PARAMETER_TYPE::String},
                                                             {"Boolean", PARAMETER_TYPE::Boolean},
                                                             {"Float", PARAMETER_TYPE::Float}};
    return entry.contains(key) && std::all_of(entry[key].begin(), entry[key].end(), [&](const Json& one) {
               ParameterDescriptor descriptor;
               const bool isThere = read(one, words, descriptor.m_Type) && read(one, "Label", descriptor.m_Label);
               if (isThere) {
                   descriptors.push_back(descriptor);
               }
               return isThere;
           });
}

void read(const Json& entry, SimulatedCameraIdentification& one) {
    if (entry.is_object() && entry.contains("Identification")) {
        read(entry["Identification"], "Model Name", one.m_ModelName) &&
            read(entry["Identification"], "Serial Number", one.m_SerialNumber);
    }
}

void read(const Json& entry, SimulatedPropertyDescription& one) {
    static const std::map<std::string, PROPERTY_TYPE> words{{"Integer", PROPERTY_TYPE::Integer},
                                                            {"Float", PROPERTY_TYPE::Float},
                                                            {"String", PROPERTY_TYPE::String},
                                                            {"Boolean", PROPERTY_TYPE::Boolean}};
    read(entry, "Name", one.m_Name) && read(entry, words, one.m_Type) && read(entry, "Minimum", one.m_Minimum) &&
        read(entry, "Maximum", one.m_Maximum) && read(entry, "Default", one.m_Default) &&
        read(entry, "ReadOnly", one.m_ReadOnly) && read(entry, "AvailableForWriting", one.m_AvailableForWriting) &&
        read(entry, "Discrete", one.m_Discrete) && read(entry, "ValueList", one.m_ValueList);
}

void read(const Json& entry, SimulatedFunctionDescription& one) {
    read(entry, "Name", one.m_Name) && read(entry, "Parameters", one.m_Parameters) &&
        read(entry, "Return Format", one.m_ReturnFormat);
}

/// What the entries with a serial number have under a key, one after another.
template <typename Description>
std::vector<Description> describedIn(const Json& cameras, const std::string& serialNumber, const char* key) {
    std::vector<Description> descriptions;
    for (const auto& camera : cameras) {
        if (camera.at("Identification").at("Serial Number").get<std::string>() == serialNumber) {
            for (const auto& entry : camera.at(key)) {
                read(entry, descriptions.emplace_back());
            }
        }
    }
    return descriptions;
}

std::string textOf(const SimulatedPropertyDescription& property) {
    std::string text = property.m_Name + '\n' + std::to_string(static_cast<int>(property.m_Type)) + '\n' +
                       property.m_Minimum + '\n' + property.m_Maximum + '\n' + property.m_Default + '\n' +
                       std::to_string(property.m_ReadOnly) + std::to_string(property.m_AvailableForWriting) +
                       std::to_string(property.m_Discrete);
    for (const std::string& value : property.m_ValueList) {
        text += '\n' + value;
    }
    return text;
}

std::string textOf(const SimulatedFunctionDescription& function) {
    std::string text = function.m_Name;
    for (const auto* descriptors : {&function.m_Parameters, &function.m_ReturnFormat}) {
        text += '\n';
        for (const ParameterDescriptor& descriptor : *descriptors) {
            text += '\n' + std::to_string(static_cast<int>(descriptor.m_Type)) + descriptor.m_Label;
        }
    }
    return text;
}

/// What a camera's entries have under a key, as the library reads it piece by piece and as the whole document says it.
template <typename Description, typename Load>
void checkDescriptions(const Json& cameras, const std::string& serialNumber, const char* key, Load load) {
    std::vector<Description> loaded;
    std::vector<Description> whole;
    const bool isRefusedHere = isRefused<JsonException>([&] { loaded = load(serialNumber); });
    require(isRefused<JsonException>([&] { whole = describedIn<Description>(cameras, serialNumber, key); }) ==
                isRefusedHere,
            "entries are refused for a reason");
    require(std::equal(loaded.begin(), loaded.end(), whole.begin(), whole.end(),
                       [](const auto& one, const auto& other) { return textOf(one) == textOf(other); }),
            "descriptions are those of the document");
}

void checkProperty(Property& property, const SimulatedPropertyDescription& description) {
    require(property.getType() == description.m_Type && property.getMinimum() == description.m_Minimum &&
                property.getMaximum() == description.m_Maximum && property.getDefault() == description.m_Default &&
                property.isReadOnly() == description.m_ReadOnly && property.isDiscrete() == description.m_Discrete &&
                property.getValueList() == description.m_ValueList,
            "a property matches its description");
    require(property.getValue() == property.getDefault(), "a property begins with its default");
    const std::string written("\0 written", 9);
    int changes = 0;
    property.registerOnChangeCallback([&](Property&) { ++changes; });
    property.setValue(written);
    require(property.getValue() == (property.isReadOnly() ? description.m_Default : written) &&
                changes == (property.isReadOnly() ? 0 : 1),
            "it can be written unless it is read-only");
}

void checkFunction(Camera& camera, const std::string& name) {
    std::vector<std::string> parameters{"0x10", "8"};
    if (name == "Write Flash" || name == "Update Flash") {
        parameters[1].assign("\0bytes", 6);
        camera.perform(name, parameters);
        require(static_cast<SimulatedCamera&>(camera).getFlashMemory().read(0x10, 6) == parameters[1],
                "flash keeps what is written");
    } else {
        isRefused<KestrelException, std::invalid_argument>([&] { camera.perform(name, parameters); });
    }
    parameters.clear();
    isRefused<KestrelException>([&] { camera.perform(name, parameters); });
}

void checkCamera(Camera& camera) {
    const std::string serialNumber = camera.getSerialNumber();
    std::vector<SimulatedPropertyDescription> properties;
    std::vector<SimulatedFunctionDescription> functions;
    const bool incomplete = isRefused<JsonException>([&] {
        properties = loadPropertyDescriptions(serialNumber);
        functions = loadFunctionDescriptions(serialNumber);
    });
    require(isRefused<JsonException>([&] { camera.connect(); }) == incomplete,
            "a camera connects if its description is complete");
    require(camera.isConnected() != incomplete, "a camera is connected if its description is complete");
    if (incomplete) {
        return;
    }
    std::set<std::string> names;
    for (const SimulatedPropertyDescription& description : properties) {
        if (names.insert(description.m_Name).second) { // of several with the same name, the first counts
            checkProperty(camera.getProperty(description.m_Name), description);
        }
    }
    require(camera.getSupportedProperties() == std::vector<std::string>(names.begin(), names.end()),
            "there are the properties of the list and no others");
    names.clear();
    for (const SimulatedFunctionDescription& description : functions) {
        if (names.insert(description.m_Name).second) {
            Function& function = camera.getFunction(description.m_Name);
            require(function.getParameters().size() == description.m_Parameters.size() &&
                        function.getReturnFormat().size() == description.m_ReturnFormat.size(),
                    "a function is as it is described");
            checkFunction(camera, description.m_Name);
        }
    }
    require(camera.getSupportedFunctions() == std::vector<std::string>(names.begin(), names.end()),
            "there are the functions of the list and no others");
    camera.getCameraInfo();
}

} // namespace

std::string CameraInterface::SimulatedAdapter::getDescriptionFilePath() {
    return MemoryFile::instance().path();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryFile::instance().fill(data, size);
    IdentificationCache::instance().forget();
    Json listed;
    const bool isNoList = isRefused<JsonException>([&] { listed = readCameras(data, size); });
    std::vector<std::unique_ptr<Camera>> cameras;
    require(isRefused<JsonException>([&] { cameras = SimulatedCamera::getListOfCameras(); }) == isNoList,
            "only what is no list is refused");
    require(cameras.size() == listed.size(), "every entry of the list is a camera");
    auto entry = listed.begin();
    for (const auto& camera : cameras) {
        SimulatedCameraIdentification identification;
        read(*entry++, identification);
        require(camera->getSerialNumber() == identification.m_SerialNumber &&
                    camera->getModelName() == identification.m_ModelName,
                "a camera is who its entry says");
    }
    if (isNoList) {
        require(isRefused<JsonException>([] { loadPropertyDescriptions("1"); }), "and has no properties");
        return 0;
    }
    for (const char* serialNumber : {"1", "2"}) {
        checkDescriptions<SimulatedPropertyDescription>(listed, serialNumber, "Properties", loadPropertyDescriptions);
        checkDescriptions<SimulatedFunctionDescription>(listed, serialNumber, "Functions", loadFunctionDescriptions);
    }
    constexpr std::size_t kChecked = 3; // each reads the file four times
    cameras.resize(std::min(cameras.size(), kChecked));
    for (const auto& camera : cameras) {
        checkCamera(*camera);
    }
    return 0;
}
