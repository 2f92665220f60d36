// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "Functions/Orvex/OrvexCommands.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexReboot::OrvexReboot(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexReboot::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexReboot::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const unsigned int mode = parseRebootMode(parameters[0]);
    const std::uint8_t data = 0;
    requireExecution(orvexApi().sdkCommandWrite(m_Camera->getHandle(), kRebootCommand, mode, 1, &data) != 0, getName(),
                     QUILL_HERE);
    return {};
}

std::vector<ParameterDescriptor> OrvexReboot::getParameters() {
    return {{"Mode", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
