// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace PythonBinding {

/// Work on a camera's flash, RAM and JTAG port, and the files for it.
void bindProgramming(pybind11::module_& module);

} // namespace PythonBinding
