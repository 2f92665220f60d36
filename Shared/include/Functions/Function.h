// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "../Export.h"
#include "../PropertyValueEnumerations.h"

namespace CameraInterface {

/// One parameter or result of a function: its label and the type that its text represents.
struct ParameterDescriptor {
    std::string m_Label;
    PARAMETER_TYPE m_Type = PARAMETER_TYPE::String;
};

/// A named operation of a camera: flash, RAM, reboot, JTAG.
///
/// Parameters and results are texts, one per descriptor, in the same order. Numbers are parsed with automatic base
/// ("0x" hexadecimal, leading 0 octal, otherwise decimal); data bytes are the bytes of the string, zeros included.
/// Reentrant: functions have no locks; only one thread at a time may perform functions of a camera.
class QUILL_API Function {
public:
    Function(const Function&) = default;
    Function& operator=(const Function&) = default;
    virtual ~Function();

    /// Performs the function on the calling thread. Blocks for as long as the camera takes.
    /// @return one text per descriptor of getReturnFormat()
    /// @throws KestrelException_InvalidArgument "ArgumentEmpty"  fewer parameters than the function reads
    /// @throws KestrelException_Function "FunctionExecution"  the operation failed
    virtual std::vector<std::string> perform(std::vector<std::string>& parameters) = 0;
    virtual bool isAvailable() = 0;
    virtual std::vector<ParameterDescriptor> getParameters() = 0;
    virtual std::vector<ParameterDescriptor> getReturnFormat() = 0;

    /// The name under which the camera lists the function.
    std::string getName() const;

protected:
    explicit Function(const std::string& name);

    /// Called at the end of a concrete constructor, which throws "FunctionUnsupported" if the result is false.
    virtual bool isFunctionSupported() const;

private:
    std::string m_Name;
};

} // namespace CameraInterface
