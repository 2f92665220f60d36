// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace PythonBinding {

/// GenICam cameras: where they are looked for, and their network.
void bindNetwork(pybind11::module_& module);

} // namespace PythonBinding
