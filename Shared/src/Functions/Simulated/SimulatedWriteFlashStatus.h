#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Writes bytes to the flash status registers: address, status.
class SimulatedWriteFlashStatus : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
