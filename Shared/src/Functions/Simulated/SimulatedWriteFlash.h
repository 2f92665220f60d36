#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Writes bytes to the flash memory: address, data.
class SimulatedWriteFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
