// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Functions/Function.h"

namespace CameraInterface::SimulatedAdapter {

class SimulatedCamera;

/// A function of a simulated camera. This class accepts any parameters and does nothing; it represents functions that
/// have no simulated behaviour. Its descriptors are those of the camera list; perform() does not use them.
class SimulatedFunction : public Function {
public:
    /// @param camera the camera that owns the function
    SimulatedFunction(SimulatedCamera* camera, const std::string& name,
                      const std::vector<ParameterDescriptor>& parameters,
                      const std::vector<ParameterDescriptor>& returnFormat);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<ParameterDescriptor> getParameters() override;
    std::vector<ParameterDescriptor> getReturnFormat() override;

protected:
    SimulatedCamera& camera() const { return *m_Camera; }

    /// Parses a signed 32-bit number with automatic base as an address: "-1" is 0xFFFFFFFF.
    static std::uint32_t parseAddress(const std::string& text);

    /// Whether @p length bytes from @p address on can be read or erased: the length is not negative, and the range ends
    /// before the last address.
    static bool isValidRange(std::uint32_t address, int length);

private:
    SimulatedCamera* m_Camera;
    std::vector<ParameterDescriptor> m_Parameters;
    std::vector<ParameterDescriptor> m_ReturnFormat;
};

/// Reads bytes of the flash memory: address, length. The result is one string of that many bytes.
class SimulatedReadFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Writes bytes to the flash memory: address, data.
class SimulatedWriteFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Erases bytes of the flash memory: address, length. Silently ignores a range that it cannot erase.
class SimulatedEraseFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Rewrites bytes of the flash memory: address, data. A simulated flash needs no erasing, so it is a write.
class SimulatedUpdateFlash : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Reads one byte of the flash status registers: address.
class SimulatedReadFlashStatus : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Writes bytes to the flash status registers: address, status.
class SimulatedWriteFlashStatus : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Selects what the camera boots: "Bootloader" or "Firmware". Nothing else changes.
/// @throws std::invalid_argument "Reboot mode not valid."  (from perform) any other mode
class SimulatedReboot : public SimulatedFunction {
public:
    using SimulatedFunction::SimulatedFunction;

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
};

/// Creates the function that the name of a description stands for; for any other name, a function that does nothing.
std::unique_ptr<Function> makeSimulatedFunction(SimulatedCamera* camera,
                                                const SimulatedFunctionDescription& description);

} // namespace CameraInterface::SimulatedAdapter
