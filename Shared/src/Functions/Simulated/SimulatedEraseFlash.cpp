// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include "Base/TextConversion.h"
#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Functions/FunctionParameters.h"

namespace CameraInterface::SimulatedAdapter {

std::vector<std::string> SimulatedEraseFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    const std::uint32_t address = parseAddress(parameters[0]);
    const int length = Base::parseInteger(parameters[1]);
    if (isValidRange(address, length)) {
        camera().getFlashMemory().clear(address, static_cast<std::uint32_t>(length));
    }
    return {};
}

} // namespace CameraInterface::SimulatedAdapter
