#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Reads one byte of the flash status registers: address.
class SimulatedReadFlashStatus : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
