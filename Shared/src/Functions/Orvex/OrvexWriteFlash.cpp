// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexWriteFlash::OrvexWriteFlash(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexWriteFlash::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexWriteFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const std::uint32_t address = parseUnsignedAddress(parameters[0]);
    const std::string& data = parameters[1];
    const std::uint32_t length = requireLength(data.size(), getName(), QUILL_HERE);
    requireExecution(orvexApi().sdkWriteFlash(m_Camera->getHandle(), reinterpret_cast<const std::uint8_t*>(data.data()),
                                              address, length) != 0,
                     getName(), QUILL_HERE);
    return {};
}

std::vector<ParameterDescriptor> OrvexWriteFlash::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Data", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
