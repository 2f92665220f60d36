// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Camera/Session.h"
#include "Serve/Cameras/KnownCamera.h"
#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// The document of the list of cameras.
Json listReport(KnownCameras& known);
/// The entry of one camera in it.
Json cameraReport(KnownCamera& camera, const SelectedCamera& selected);
/// Rates, times, temperatures and counters of a connected camera.
Json statisticsReport(const SelectedCamera& camera);
/// The data of the event "log".
/// @param level  "info", "warning" or "error"
/// @param serialNumber  may be empty
Json logReport(const char* level, const std::string& serialNumber, const std::string& text);

} // namespace QuillTool::Serve
