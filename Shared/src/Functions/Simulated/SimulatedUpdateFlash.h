#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Rewrites bytes of the flash memory: address, data. A simulated flash needs no erasing, so it is a write.
class SimulatedUpdateFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
