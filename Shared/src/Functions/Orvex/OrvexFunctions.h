// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Writes to erased flash.
class OrvexWriteFlash : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexWriteFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

/// Writes to flash, whether or not it is erased; the other bytes of the sector are kept.
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

/// Reads a range of the flash.
class OrvexReadFlash : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexReadFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

/// Sets a range of the flash to 0xFF.
class OrvexEraseFlash : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexEraseFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

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

/// Writes the status register of the flash.
class OrvexWriteFlashStatus : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexWriteFlashStatus(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

/// Restarts the camera into "Bootloader" or "Firmware". Does not wait for its return.
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

/// Plays an XSVF file into the JTAG port. Does not report whether that succeeded.
class OrvexJtag : public CameraInterface::Function {
public:
    /// @param camera the camera that owns the function
    OrvexJtag(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    bool isAvailable() override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;

private:
    OrvexCamera* m_Camera;
};

/// Loads bytes into RAM; with no bytes, starts the loaded program at the address.
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

/// Adds the maintenance functions of an SDK camera to its table. Omits functions that cannot be constructed.
void buildOrvexFunctions(std::map<std::string, std::unique_ptr<CameraInterface::Function>>& functions,
                         OrvexCamera* camera);

} // namespace OrvexAdapter
