// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <Quill.h>
#include <pybind11/pybind11.h>

namespace PythonBinding {

/// The value that a text stands for: an int, a float, a bool, or the text where it is none of the type.
pybind11::object toValue(CameraInterface::PROPERTY_TYPE type, const std::string& text);
/// The text of a value: of a number as Python writes it, "Enabled" or "Disabled" for a bool, a str or its bytes.
/// @throws pybind11::type_error
std::string toText(pybind11::handle value);
/// The same of a parameter of a function, which may be any contiguous bytes as well.
std::string toParameter(pybind11::handle value);

/// What a function returned, by the declared types; a String is bytes. None for nothing, a tuple for several.
pybind11::object toResults(const std::vector<CameraInterface::ParameterDescriptor>& types,
                           const std::vector<std::string>& texts);

} // namespace PythonBinding
