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

OrvexWriteFlashStatus::OrvexWriteFlashStatus(const std::string& name, OrvexCamera* camera)
    : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexWriteFlashStatus::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexWriteFlashStatus::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const std::uint32_t address = parseUnsignedAddress(parameters[0]);
    const std::string& status = parameters[1];
    const std::uint32_t length = requireLength(status.size(), getName(), QUILL_HERE);
    requireExecution(orvexApi().sdkCommandWrite(m_Camera->getHandle(), kFlashStatusCommand, address, length,
                                                reinterpret_cast<const std::uint8_t*>(status.data())) != 0,
                     getName(), QUILL_HERE);
    return {};
}

std::vector<ParameterDescriptor> OrvexWriteFlashStatus::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Status", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
