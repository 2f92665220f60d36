#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Reads the status register of the flash: one byte.
class OrvexReadFlashStatus : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexReadFlashStatus(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

} // namespace OrvexAdapter
