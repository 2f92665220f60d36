#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Starts the camera anew, "Bootloader" or "Firmware". Does not wait until it is back.
class OrvexReboot : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexReboot(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

} // namespace OrvexAdapter
