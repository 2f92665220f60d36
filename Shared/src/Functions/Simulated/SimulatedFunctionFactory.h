#pragma once

#include <memory>

#include "Cameras/SimulatedCamera/CameraListFile.h"
#include "Functions/Function.h"

namespace CameraInterface::SimulatedAdapter {

class SimulatedCamera;

/// Makes the function that the name of a description stands for; any other name makes one that does nothing.
std::unique_ptr<Function> makeSimulatedFunction(SimulatedCamera* camera,
                                                const SimulatedFunctionDescription& description);

} // namespace CameraInterface::SimulatedAdapter
