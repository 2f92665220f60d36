// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace Usb3VisionAdapter {

class Usb3VisionCamera;

/// Restarts the camera into its "Bootloader" or its "Firmware".
/// @throws std::invalid_argument "Reboot mode not valid."  (from perform) any other mode
/// @throws std::runtime_error "Failed to reboot camera in the desired mode."  (from perform) the camera refuses and
///     still answers
class Usb3VisionReboot : public CameraInterface::Function {
public:
    Usb3VisionReboot(const std::string& name, Usb3VisionCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    Usb3VisionCamera* m_Camera; // owns this function
};

} // namespace Usb3VisionAdapter
