// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Cameras/GenICam.h"
#include "Cameras/GenICamNetwork.h"

namespace CameraInterface::GenICam {

/// What the library of the GenICam adapter provides. Thread-safe.
struct Plug {
    /// The version of this library that the adapter was built with. They share classes: only the same version fits.
    const char* version;
    /// Creates a disconnected object for each attached camera. The first call waits for the network's answers.
    std::vector<std::unique_ptr<Camera>> (*getListOfCameras)(const Settings& settings);
    /// Ends the threads until the next enumeration. At the exit of the process it also waits for the thread that closes
    /// cameras that are gone, for a few seconds at most.
    void (*rest)(bool atExit);

    // The network of cameras: see GenICamNetwork.h. Arguments are checked.

    CameraNetwork (*describeNetwork)(const Settings& settings, const std::string& serialNumber);
    void (*setPersistentAddress)(const Settings& settings, const std::string& serialNumber, const NetworkPlace& place);
    void (*setAddressMode)(const Settings& settings, const std::string& serialNumber, bool persistent, bool dhcp);
    std::uint32_t (*setPacketSize)(const Settings& settings, const std::string& serialNumber, std::uint32_t bytes);
    std::uint64_t (*setPacketDelayNs)(const Settings& settings, const std::string& serialNumber,
                                      std::uint64_t nanoseconds);
    std::uint32_t (*setHeartbeatMs)(const Settings& settings, const std::string& serialNumber,
                                    std::uint32_t milliseconds);
    void (*forceAddress)(const Settings& settings, const std::string& camera, const NetworkPlace& place);
    std::vector<LinkFinding> (*examineLink)(const Settings& settings, const std::string& serialNumber);
};

/// The adapter's only exported name; a function without parameters that returns the address of its Plug.
constexpr const char* kPlugName = "quill_genicam_plug";

} // namespace CameraInterface::GenICam
