// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Functions/FunctionParameters.h"

namespace CameraInterface::SimulatedAdapter {

std::vector<std::string> SimulatedReadFlashStatus::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    return {camera().getFlashStatus().read(parseAddress(parameters[0]), 1)};
}

} // namespace CameraInterface::SimulatedAdapter
