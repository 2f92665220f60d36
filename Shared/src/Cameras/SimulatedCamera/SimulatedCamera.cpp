// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/SimulatedCamera.h"

#include <array>
#include <exception>
#include <utility>

#include "Cameras/CameraInfo.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/IdentificationCache.h"
#include "Exceptions/Raise.h"
#include "Functions/Simulated/SimulatedFunctions.h"
#include "Properties/SimulatedProperty.h"

namespace CameraInterface::SimulatedAdapter {

using namespace KestrelExceptions;

SimulatedCamera::SimulatedCamera(const std::string& serialNumber, const std::string& modelName)
    : Camera(CameraKind::Simulated), m_SerialNumber(serialNumber), m_ModelName(modelName) {}

SimulatedCamera::~SimulatedCamera() {
    try {
        SimulatedCamera::disconnect();
    } catch (const KestrelException&) {
        // A suspended camera refuses to be disconnected; there is nothing to close.
    }
}

std::vector<std::unique_ptr<Camera>> SimulatedCamera::getListOfCameras() {
    std::vector<std::unique_ptr<Camera>> cameras;
    for (const SimulatedCameraIdentification& identification : IdentificationCache::instance().get()) {
        try {
            cameras.push_back(
                std::make_unique<SimulatedCamera>(identification.m_SerialNumber, identification.m_ModelName));
        } catch (const std::exception&) {
            // The other cameras are still usable.
        }
    }
    return cameras;
}

std::unique_ptr<Imaging::Image> SimulatedCamera::getImage() {
    return Imaging::createImage(1, 1, {0}, 8, true, Imaging::IMAGE_FORMAT::MONO);
}

std::map<std::string, std::string> SimulatedCamera::getCameraInfo() {
    return collectCameraInfo(*this);
}

std::string SimulatedCamera::getSerialNumber() {
    return m_SerialNumber;
}

std::string SimulatedCamera::getModelName() {
    return m_ModelName;
}

bool SimulatedCamera::isCameraAlive() {
    return m_Alive;
}

void SimulatedCamera::connect() {
    if (isConnected() && !isRetired()) {
        return;
    }
    requireTransition(CameraState::Connected, QUILL_HERE);
    buildProperties();
    buildFunctions();
    m_State = CameraState::Connected;
}

void SimulatedCamera::disconnect() {
    if (getState() == CameraState::Disconnected) {
        return;
    }
    requireTransition(CameraState::Disconnected, QUILL_HERE);
    m_State = CameraState::Disconnected;
}

void SimulatedCamera::suspend() {
    requireTransition(CameraState::Suspended, QUILL_HERE);
    m_State = CameraState::Suspended;
}

void SimulatedCamera::buildProperties() {
    for (const SimulatedPropertyDescription& description : loadPropertyDescriptions(getSerialNumber())) {
        try {
            auto property = std::make_unique<SimulatedProperty>(
                description.m_Name, description.m_Type, description.m_Minimum, description.m_Maximum,
                description.m_Default, description.m_ReadOnly, description.m_Discrete, description.m_ValueList);
            m_Properties.emplace(property->getName(), std::move(property));
        } catch (const KestrelException_Property&) {
            // A property or function that cannot be constructed is omitted.
        }
    }
    updatePropertyChangeCallback();
    connectIncrements();
}

void SimulatedCamera::buildFunctions() {
    for (const SimulatedFunctionDescription& description : loadFunctionDescriptions(getSerialNumber())) {
        try {
            std::unique_ptr<Function> function = makeSimulatedFunction(this, description);
            m_Functions.emplace(function->getName(), std::move(function));
        } catch (const KestrelException_Function&) {
            // A property or function that cannot be constructed is omitted.
        }
    }
}

} // namespace CameraInterface::SimulatedAdapter
