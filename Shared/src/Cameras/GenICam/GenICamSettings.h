// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Cameras/GenICam.h"

namespace CameraInterface::GenICam {

/// Reads the lines of the file of settings.
/// @throws KestrelException "SettingsInvalid"  names the line and what is wrong with it
Settings parseSettings(const std::string& text);

/// Replaces cards and addresses by those of a list with commas.
/// @throws KestrelException "SettingsInvalid"
void replaceNetwork(Settings& settings, const std::string& list);

} // namespace CameraInterface::GenICam
