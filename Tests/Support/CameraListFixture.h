// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Cameras/Camera.h"
#include "Cameras/CameraAdapters.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

/// A fixture whose camera list file is its own and whose adapters it chooses; at first the simulated cameras alone.
class CameraListFixture : public ::testing::Test {
protected:
    CameraListFixture();
    ~CameraListFixture() override;

    /// Replaces the list of simulated cameras; the next enumeration reads it.
    void describeCameras(const std::string& json);
    void removeCameraList();
    /// Replaces the adapters that the camera list asks.
    static void useAdapters(std::vector<CameraInterface::CameraAdapter> adapters);
    /// Adapter of the simulated cameras.
    static CameraInterface::CameraAdapter simulatedAdapter();

private:
    TemporaryFolder m_Folder;
};

} // namespace TestSupport
