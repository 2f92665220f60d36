// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Functions/FunctionParameters.h"

namespace CameraInterface::SimulatedAdapter {

std::vector<std::string> SimulatedWriteFlash::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 2, QUILL_HERE);
    camera().getFlashMemory().write(parseAddress(parameters[0]), parameters[1]);
    return {};
}

} // namespace CameraInterface::SimulatedAdapter
