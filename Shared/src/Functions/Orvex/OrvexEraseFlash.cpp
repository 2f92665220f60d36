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

OrvexEraseFlash::OrvexEraseFlash(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexEraseFlash::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexEraseFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const int address = Base::parseInteger(parameters[0]);
    const int length = Base::parseInteger(parameters[1]);
    requireExecution(length >= 0, getName(), QUILL_HERE);
    if (length > 0) {
        requireExecution(orvexApi().sdkEraseFlash(m_Camera->getHandle(), static_cast<std::uint32_t>(address),
                                                  static_cast<std::uint32_t>(length)) != 0,
                         getName(), QUILL_HERE);
    }
    return {};
}

std::vector<ParameterDescriptor> OrvexEraseFlash::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Length", PARAMETER_TYPE::Integer}};
}

} // namespace OrvexAdapter
