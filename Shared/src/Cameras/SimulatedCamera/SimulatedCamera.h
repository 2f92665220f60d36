// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Cameras/SimulatedCamera/SparseMemory.h"

namespace CameraInterface::SimulatedAdapter {

/// A camera that exists only in the camera list: properties hold texts, flash and status registers are kept in memory,
/// images are one black pixel. Flash and registers outlast disconnection and end with the object.
class SimulatedCamera : public Camera {
public:
    SimulatedCamera(const std::string& serialNumber, const std::string& modelName);
    SimulatedCamera(const SimulatedCamera&) = delete;
    SimulatedCamera& operator=(const SimulatedCamera&) = delete;
    ~SimulatedCamera() override;

    /// Returns a new object for each camera of the list. The list is read once in the process. Throws if it cannot be
    /// parsed.
    static std::vector<std::unique_ptr<Camera>> getListOfCameras();

    std::unique_ptr<Imaging::Image> getImage() override;
    std::map<std::string, std::string> getCameraInfo() override;
    std::string getSerialNumber() override;
    std::string getModelName() override;
    bool isCameraAlive() override;
    void connect() override;
    void disconnect() override;
    void suspend() override;

    SparseMemory& getFlashMemory() { return m_FlashMemory; }
    SparseMemory& getFlashStatus() { return m_FlashStatus; }
    void setBootMode(const std::string& mode) { m_BootMode = mode; }

protected:
    void buildProperties() override;
    void buildFunctions() override;

private:
    std::string m_SerialNumber;
    std::string m_ModelName;
    std::string m_BootMode = "Firmware";
    bool m_Alive = true;
    SparseMemory m_FlashMemory{0xFF}; // erased
    SparseMemory m_FlashStatus{0x00};
};

} // namespace CameraInterface::SimulatedAdapter
