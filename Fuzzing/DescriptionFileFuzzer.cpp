// SPDX-License-Identifier: Apache-2.0

// Lists of simulated cameras, from the file to the properties and functions of connected cameras.

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
using JsonException = nlohmann::json::exception;

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

/// The number of cameras that a document lists.
std::size_t countCameras(const std::uint8_t* data, std::size_t size) {
    // Only the first value: the rest of the file is not read.
    const std::string text(data, data + size);
    std::istringstream stream(text);
    nlohmann::json document;
    stream >> document;
    const auto cameras = document.find("Cameras");
    return cameras == document.end() ? 0 : cameras->size();
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
    std::size_t count = 0;
    const bool isNoList = isRefused<JsonException>([&] { count = countCameras(data, size); });
    std::vector<std::unique_ptr<Camera>> cameras;
    require(isRefused<JsonException>([&] { cameras = SimulatedCamera::getListOfCameras(); }) == isNoList,
            "only what is no list is refused");
    require(cameras.size() == count, "every entry of the list is a camera");
    constexpr std::size_t kChecked = 3; // each reads the file four times
    cameras.resize(std::min(cameras.size(), kChecked));
    for (const auto& camera : cameras) {
        checkCamera(*camera);
    }
    return 0;
}
