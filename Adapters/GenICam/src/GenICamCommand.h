// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Functions/Function.h"

namespace GenICamAdapter {

class GenICamCamera;

/// A command of the camera, such as "TriggerSoftware": a function without parameters and results.
class GenICamCommand : public CameraInterface::Function {
public:
    GenICamCommand(GenICamCamera& camera, const std::string& name);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    /// Whether the camera executes the command in its present state.
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    GenICamCamera* m_Camera;
};

} // namespace GenICamAdapter
