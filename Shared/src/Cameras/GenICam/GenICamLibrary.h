// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "Cameras/Camera.h"

/// The GenICam adapter, which is loaded from beside this library once it is needed.
namespace CameraInterface::GenICam {

/// The cameras of the adapter; none if it is not installed and nobody has named a card or an address.
/// @throws KestrelException  the settings are invalid, or the adapter is needed and cannot be loaded
std::vector<std::unique_ptr<Camera>> getListOfCameras();

struct Plug;

/// The adapter, which is loaded if need be.
/// @throws KestrelException "CameraEnumeration"  it cannot be loaded; says why
const Plug& requirePlug();

/// Lets the adapter rest, if it is loaded; see Plug.
void rest(bool atExit);

/// Whether a USB3 Vision camera, or another device of its class, is attached. Asks the system, not the device.
bool isUsb3VisionDeviceAttached();

} // namespace CameraInterface::GenICam
