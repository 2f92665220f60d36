// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Functions/FunctionParameters.h"

namespace CameraInterface::SimulatedAdapter {

std::vector<std::string> SimulatedReboot::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const std::string& mode = parameters[0];
    parseRebootMode(mode);
    camera().setBootMode(mode);
    return {};
}

} // namespace CameraInterface::SimulatedAdapter
