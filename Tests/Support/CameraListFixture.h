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

/// A fixture with its own camera list file and selectable adapters; initially only that of the simulated cameras.
class CameraListFixture : public ::testing::Test {
protected:
    CameraListFixture();
    ~CameraListFixture() override;

    /// Replaces the list of simulated cameras; the next enumeration reads it.
    void describeCameras(const std::string& json);
    void removeCameraList();
    /// Replaces the adapters of the camera list.
    static void useAdapters(std::vector<CameraInterface::CameraAdapter> adapters);
    /// The adapter of the simulated cameras.
    static CameraInterface::CameraAdapter simulatedAdapter();

private:
    TemporaryFolder m_Folder;
};

} // namespace TestSupport
