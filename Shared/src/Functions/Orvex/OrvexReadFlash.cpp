// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>
#include <utility>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "Internal/QuillInternal.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexReadFlash::OrvexReadFlash(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexReadFlash::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexReadFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const int address = Base::parseInteger(parameters[0]);
    const int length = Base::parseInteger(parameters[1]);
    requireExecution(length >= 0 && static_cast<std::uint32_t>(length) <= QuillInternal::kFlashSize, getName(),
                     QUILL_HERE);
    if (length == 0) {
        return {};
    }
    std::string data(static_cast<std::size_t>(length), '\0');
    requireExecution(orvexApi().sdkReadFlash(m_Camera->getHandle(), reinterpret_cast<std::uint8_t*>(data.data()),
                                             static_cast<std::uint32_t>(address),
                                             static_cast<std::uint32_t>(length)) != 0,
                     getName(), QUILL_HERE);
    return {std::move(data)};
}

std::vector<ParameterDescriptor> OrvexReadFlash::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Length", PARAMETER_TYPE::Integer}};
}

std::vector<ParameterDescriptor> OrvexReadFlash::getReturnFormat() {
    return {{"Data", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
