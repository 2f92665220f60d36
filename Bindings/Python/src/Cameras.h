// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace PythonBinding {

/// The list of cameras, and cameras.
void bindCameras(pybind11::module_& module);

} // namespace PythonBinding
