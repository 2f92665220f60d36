// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// A maintenance function of an SDK camera: always available, and without results unless it overrides their format.
class OrvexFunction : public CameraInterface::Function {
public:
    bool isAvailable() override { return true; }
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override { return {}; }

protected:
    /// @param camera the camera that owns the function
    OrvexFunction(const std::string& name, OrvexCamera* camera) : Function(name), m_Camera(camera) {}

    OrvexCamera* m_Camera;
};

/// Writes to erased flash.
class OrvexWriteFlash : public OrvexFunction {
public:
    OrvexWriteFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Writes to flash, whether or not it is erased; the other bytes of the sector are kept.
class OrvexUpdateFlash : public OrvexFunction {
public:
    OrvexUpdateFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Reads a range of the flash.
class OrvexReadFlash : public OrvexFunction {
public:
    OrvexReadFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;
};

/// Sets a range of the flash to 0xFF.
class OrvexEraseFlash : public OrvexFunction {
public:
    OrvexEraseFlash(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Reads the status register of the flash: one byte.
class OrvexReadFlashStatus : public OrvexFunction {
public:
    OrvexReadFlashStatus(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
    std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override;
};

/// Writes the status register of the flash.
class OrvexWriteFlashStatus : public OrvexFunction {
public:
    OrvexWriteFlashStatus(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Restarts the camera into "Bootloader" or "Firmware". Does not wait for its return.
class OrvexReboot : public OrvexFunction {
public:
    OrvexReboot(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Plays an XSVF file into the JTAG port. Does not report whether that succeeded.
class OrvexJtag : public OrvexFunction {
public:
    OrvexJtag(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Loads bytes into RAM; with no bytes, starts the loaded program at the address.
class OrvexWriteRam : public OrvexFunction {
public:
    OrvexWriteRam(const std::string& name, OrvexCamera* camera);

    std::vector<std::string> perform(std::vector<std::string>& parameters) override;
    std::vector<CameraInterface::ParameterDescriptor> getParameters() override;
};

/// Adds the maintenance functions of an SDK camera to its table. Omits functions that cannot be constructed.
void buildOrvexFunctions(std::map<std::string, std::unique_ptr<CameraInterface::Function>>& functions,
                         OrvexCamera* camera);

} // namespace OrvexAdapter
