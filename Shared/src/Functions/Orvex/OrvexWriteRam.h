#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Loads bytes into RAM. No bytes start the loaded program at the address.
class OrvexWriteRam : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexWriteRam(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

} // namespace OrvexAdapter
