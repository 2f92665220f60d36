#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Writes to flash, erased or not; what lies around it in the same sector is kept.
class OrvexUpdateFlash : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexUpdateFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

} // namespace OrvexAdapter
