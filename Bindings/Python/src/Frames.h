// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include <Quill.h>
#include <pybind11/pybind11.h>

#include "CameraHandle.h"

namespace PythonBinding {

/// Settings of a queue from their names in Python.
/// @throws pybind11::value_error
CameraInterface::FrameQueueSettings queueSettings(std::size_t capacity, const std::string& whenFull, std::string name);

/// A dict of counters by name; each is a quillcamera._types.Counter.
pybind11::dict toPython(const std::vector<CameraInterface::StreamCounter>& counters);

/// Opens a queue of a camera.
pybind11::object openQueue(CameraHandle& camera, const CameraInterface::FrameQueueSettings& settings);

void bindFrames(pybind11::module_& module);

} // namespace PythonBinding
