#pragma once

#include "Functions/Simulated/SimulatedFunction.h"

namespace CameraInterface::SimulatedAdapter {

/// Chooses what the camera boots: "Bootloader" or "Firmware". Nothing else changes.
/// @throws std::invalid_argument "Reboot mode not valid."  (from perform) any other mode
class SimulatedReboot : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

} // namespace CameraInterface::SimulatedAdapter
