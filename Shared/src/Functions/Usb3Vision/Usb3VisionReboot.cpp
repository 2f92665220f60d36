// SPDX-License-Identifier: Apache-2.0

#include "Functions/Usb3Vision/Usb3VisionReboot.h"

#include <cstdint>
#include <stdexcept>

#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace Usb3VisionAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;

namespace {

constexpr std::uint32_t kRebootCommand = 0x1B;

} // namespace

Usb3VisionReboot::Usb3VisionReboot(const std::string& name, Usb3VisionCamera* camera)
    : Function(name), m_Camera(camera) {
    if (!Usb3VisionReboot::isFunctionSupported()) {
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionUnsupported, name);
    }
}

std::vector<std::string> Usb3VisionReboot::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const std::uint32_t mode = parseRebootMode(parameters[0]);
    const std::uint8_t data = 0;
    const bool sent =
        tarnuLibrary().TarnuSglWrite(m_Camera->getHandle(), kRebootCommand, kRebootCommand, mode, 1, &data) != 0;
    // A camera that is gone has rebooted before it could acknowledge.
    if (!sent && m_Camera->isCameraAlive()) {
        throw std::runtime_error("Failed to reboot camera in the desired mode.");
    }
    return {};
}

bool Usb3VisionReboot::isAvailable() {
    return true;
}

std::vector<ParameterDescriptor> Usb3VisionReboot::getParameters() {
    return {{"Mode", PARAMETER_TYPE::String}};
}

std::vector<ParameterDescriptor> Usb3VisionReboot::getReturnFormat() {
    return {};
}

} // namespace Usb3VisionAdapter
