// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Cameras/GenICam.h"
#include "Cameras/GenICamNetwork.h"

/// The network of cameras by their names in the list: see GenICamNetwork.h for effects and errors.
namespace GenICamAdapter::Network {

using CameraInterface::GenICam::CameraNetwork;
using CameraInterface::GenICam::LinkFinding;
using CameraInterface::GenICam::NetworkPlace;
using CameraInterface::GenICam::Settings;

CameraNetwork describe(const Settings& settings, const std::string& serialNumber);
void setPersistentAddress(const Settings& settings, const std::string& serialNumber, const NetworkPlace& place);
void setAddressMode(const Settings& settings, const std::string& serialNumber, bool persistent, bool dhcp);
std::uint32_t setPacketSize(const Settings& settings, const std::string& serialNumber, std::uint32_t bytes);
std::uint64_t setPacketDelay(const Settings& settings, const std::string& serialNumber, std::uint64_t nanoseconds);
std::uint32_t setHeartbeat(const Settings& settings, const std::string& serialNumber, std::uint32_t milliseconds);
void forceAddress(const Settings& settings, const std::string& camera, const NetworkPlace& place);
std::vector<LinkFinding> examine(const Settings& settings, const std::string& serialNumber);

} // namespace GenICamAdapter::Network
