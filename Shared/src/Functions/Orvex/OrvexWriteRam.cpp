// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <cstdint>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Functions/FunctionParameters.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace CameraInterface;

OrvexWriteRam::OrvexWriteRam(const std::string& name, OrvexCamera* camera) : OrvexFunction(name, camera) {
    requireFunctionSupport(OrvexWriteRam::isFunctionSupported(), name, QUILL_HERE);
}

std::vector<std::string> OrvexWriteRam::perform(std::vector<std::string>& parameters) {
    constexpr std::uint8_t kRamRequest = 0xA0;
    requireParameters(parameters, 2, QUILL_HERE);
    const std::uint32_t address = parseUnsignedAddress(parameters[0]);
    std::string& data = parameters[1];
    const std::uint32_t length = requireLength(data.size(), getName(), QUILL_HERE);
    requireExecution(
        orvexApi().sdkVendorRequest(m_Camera->getHandle(), kRamRequest, address >> 16, address, length,
                                    data.empty() ? nullptr : reinterpret_cast<std::uint8_t*>(data.data())) != 0,
        getName(), QUILL_HERE);
    return {};
}

std::vector<ParameterDescriptor> OrvexWriteRam::getParameters() {
    return {{"Address", PARAMETER_TYPE::Integer}, {"Data", PARAMETER_TYPE::String}};
}

} // namespace OrvexAdapter
