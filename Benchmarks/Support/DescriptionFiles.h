// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Benchmarks {

/// The path of a list file of @p cameras simulated cameras with a few properties and functions each. The file is
/// written once and removed at exit.
std::string cameraListFile(int cameras);

/// Makes the simulated cameras of such a file the only cameras; the next enumeration reads it.
void useCameraList(int cameras);

/// Sets whether the devices in software are cameras as well, through both of their libraries; initially they are not.
void useDevices(bool use);

/// Calls useCameraList() and fills the process's camera list, without watching threads. Does nothing if it is filled
/// already.
void listCameras(int cameras);

/// Empties the process's camera list and ends the watching threads, if any.
void endList();

/// Runs the check that the library makes twice a second; returns how many cameras it removed.
int checkForDisconnectedCameras();

} // namespace Benchmarks
