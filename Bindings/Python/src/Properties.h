// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <Quill.h>
#include <pybind11/pybind11.h>

#include "CameraHandle.h"

namespace PythonBinding {

/// A property as Python holds it: a name, which is looked up again for every call.
struct PropertyObject {
    CameraPointer camera;
    std::string name;
};

/// Makes a function of Python, or None, one that the library calls with a property of the camera.
std::function<void(CameraInterface::Property&)> changeFunction(const CameraPointer& camera,
                                                               const pybind11::object& function);

pybind11::object readValue(const PropertyObject& property);
void writeValue(const PropertyObject& property, pybind11::handle value);

void bindProperties(pybind11::module_& module);

} // namespace PythonBinding
