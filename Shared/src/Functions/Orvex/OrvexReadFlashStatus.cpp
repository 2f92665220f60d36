// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "Functions/Orvex/OrvexCommands.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexReadFlashStatus::OrvexReadFlashStatus(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexReadFlashStatus::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexReadFlashStatus::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const int address = Base::parseInteger(parameters[0]);
    std::uint8_t status = 0;
    requireExecution(orvexApi().sdkCommandRead(m_Camera->getHandle(), kFlashStatusCommand,
                                               static_cast<std::uint32_t>(address), 1, &status) != 0,
                     getName(), QUILL_HERE);
    return {std::string(1, static_cast<char>(status))};
}

std::vector<ParameterDescriptor> OrvexReadFlashStatus::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}};
}

std::vector<ParameterDescriptor> OrvexReadFlashStatus::getReturnFormat() {
    return {{"Status", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
