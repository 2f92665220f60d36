// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"

namespace CameraInterface::SimulatedAdapter {

using namespace KestrelExceptions;

SimulatedFunction::SimulatedFunction(SimulatedCamera* camera, const std::string& name,
                                     const std::vector<ParameterDescriptor>& parameters,
                                     const std::vector<ParameterDescriptor>& returnFormat)
    : Function(name), m_Camera(camera), m_Parameters(parameters), m_ReturnFormat(returnFormat) {
    if (!SimulatedFunction::isFunctionSupported()) {
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionUnsupported, name);
    }
}

std::vector<std::string> SimulatedFunction::perform(std::vector<std::string>& /*parameters*/) {
    return {};
}

bool SimulatedFunction::isAvailable() {
    return true;
}

std::vector<ParameterDescriptor> SimulatedFunction::getParameters() {
    return m_Parameters;
}

std::vector<ParameterDescriptor> SimulatedFunction::getReturnFormat() {
    return m_ReturnFormat;
}

std::uint32_t SimulatedFunction::parseAddress(const std::string& text) {
    return static_cast<std::uint32_t>(Base::parseInteger(text));
}

bool SimulatedFunction::isValidRange(std::uint32_t address, int length) {
    constexpr std::uint64_t kAddresses = std::uint64_t{1} << 32;
    return length == 0 || (length > 0 && std::uint64_t{address} + static_cast<std::uint64_t>(length) < kAddresses);
}

} // namespace CameraInterface::SimulatedAdapter
