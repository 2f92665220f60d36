#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Functions/Function.h"

namespace CameraInterface::SimulatedAdapter {

class SimulatedCamera;

/// A function of a simulated camera. This one accepts anything and does nothing; it stands for functions that have no
/// simulated behaviour. Its descriptors are those of the camera list, which perform() does not consult.
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

    /// A signed 32-bit number with automatic base, taken for an address: "-1" is 0xFFFFFFFF.
    static std::uint32_t parseAddress(const std::string& text);

    /// Whether @p length bytes from @p address on can be read or erased: not negative, and not up to the last address
    /// or past it.
    static bool isValidRange(std::uint32_t address, int length);

private:
    SimulatedCamera* m_Camera;
    std::vector<ParameterDescriptor> m_Parameters;
    std::vector<ParameterDescriptor> m_ReturnFormat;
};

} // namespace CameraInterface::SimulatedAdapter
