// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

namespace PythonBinding {

// Texts of cameras need not be UTF-8: other bytes become lone surrogates, as in Python's names of files.

pybind11::str toPython(const std::string& text);
pybind11::list toPython(const std::vector<std::string>& texts);
pybind11::dict toPython(const std::map<std::string, std::string>& texts);

/// The bytes of a str, or of any object with contiguous bytes.
/// @throws pybind11::type_error
std::string toBytes(pybind11::handle value);
std::vector<unsigned char> toByteVector(const pybind11::buffer& data);

} // namespace PythonBinding
