// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexUpdateFlash::OrvexUpdateFlash(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexUpdateFlash::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexUpdateFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const int address = Base::parseInteger(parameters[0]);
    const std::string& data = parameters[1];
    const std::uint32_t length = requireLength(data.size(), getName(), QUILL_HERE);
    requireExecution(orvexApi().sdkUpdateFlash(m_Camera->getHandle(),
                                               reinterpret_cast<const std::uint8_t*>(data.data()),
                                               static_cast<std::uint32_t>(address), length) != 0,
                     getName(), QUILL_HERE);
    return {};
}

std::vector<ParameterDescriptor> OrvexUpdateFlash::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Data", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
