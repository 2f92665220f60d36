#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Reads bytes of the flash memory: address, length. The result is one string of that many bytes.
class SimulatedReadFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
