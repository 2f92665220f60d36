// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "Utilities/Xsvf.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexJtag::OrvexJtag(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexJtag::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexJtag::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const std::string& data = parameters[0];
    Utilities::playXsvf(m_Camera->getHandle(), {data.begin(), data.end()});
    return {};
}

std::vector<ParameterDescriptor> OrvexJtag::getParameters() {
    return {{"Data", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
