// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <Quill.h>

namespace QuillGStreamer {

/// Reads "Video Exposure=12.5,Gain=3": names and values of properties as the library has them, without the blanks
/// around them. A backslash takes the following character as it is.
/// @throws std::invalid_argument  its sentence names the part that is no assignment
CameraInterface::CameraSettings parseAssignments(const std::string& text);

/// Reads a file of settings; see CameraInterface::parseSettings().
/// @throws std::runtime_error, KestrelException  the file cannot be read, or is not valid
CameraInterface::CameraSettings readSettingsFile(const std::string& path);

/// Writes settings to a connected camera.
/// @return a sentence about each value that the camera accepted and changed
/// @throws std::runtime_error  its sentence names a property that could not be written, and why
/// @throws what writeSettings() throws
std::vector<std::string> writeValues(CameraInterface::Camera& camera, const CameraInterface::CameraSettings& settings);

} // namespace QuillGStreamer
