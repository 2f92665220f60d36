// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "GigECamera.h"

namespace GigECameraProgram {

struct CommandLine {
    GenICamDevices::CameraOptions camera;
    bool wantsHelp = false;
    bool wantsVersion = false;
    bool untilEof = false;
};

/// @throws std::invalid_argument  the command line is wrong; says why
/// @throws std::runtime_error  a file cannot be read
CommandLine parseCommandLine(const std::vector<std::string>& words);

std::string helpText();

/// The names and values of faults, as they are written to standard input.
std::string faultHelp();

} // namespace GigECameraProgram
