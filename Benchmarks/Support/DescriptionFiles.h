// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Benchmarks {

/// A camera list file of @p cameras simulated cameras with a few properties and functions each; written once, removed
/// at exit.
std::string cameraListFile(int cameras);

/// Makes the simulated cameras of such a file the only ones that there are; the next enumeration reads it.
void useCameraList(int cameras);

/// Whether the devices in software are cameras as well, through both of their libraries; at first they are not.
void useDevices(bool use);

/// Like useCameraList(), and fills the process's camera list, without threads that watch it. Nothing happens when it is
/// filled already.
void listCameras(int cameras);

/// Empties the process's camera list and ends the threads that watch it, if any.
void endList();

/// What the library does twice a second; how many cameras it dropped.
int checkForDisconnectedCameras();

} // namespace Benchmarks
