// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "CameraReach.h"
#include "Cameras/GenICamNetwork.h"
#include "ControlChannel.h"
#include "FoundCamera.h"

namespace GenICamAdapter {

/// What is known without the camera's registers: what it told everybody, and this computer's side.
CameraInterface::GenICam::CameraNetwork describeFromOutside(const FoundCamera& camera, const CameraReach& reach);

/// Adds what the registers say.
/// @param isControlledHere  whether this program has the camera open
void addRegisters(CameraInterface::GenICam::CameraNetwork& network, ControlChannel& channel, bool isControlledHere);

/// From where a camera has its address, by the address and what is enabled.
/// @param persistent  the stored address; 0 if unknown
CameraInterface::GenICam::AddressOrigin originOf(std::uint32_t address, std::uint32_t enabledConfigurations,
                                                 std::uint32_t persistent);

/// Ticks of the camera's clock per second; 0 if the camera does not say.
std::uint64_t tickFrequencyOf(ControlChannel& channel);

// Times in nanoseconds and ticks; a pause is never shortened.
std::uint64_t nanosecondsOf(std::uint64_t ticks, std::uint64_t frequency);
std::uint64_t ticksOf(std::uint64_t nanoseconds, std::uint64_t frequency);

} // namespace GenICamAdapter
