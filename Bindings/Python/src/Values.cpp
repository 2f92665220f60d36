// SPDX-License-Identifier: Apache-2.0

#include "Values.h"

#include <cmath>

#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using CameraInterface::PARAMETER_TYPE;
using CameraInterface::ParameterDescriptor;
using CameraInterface::PROPERTY_TYPE;

namespace {

constexpr const char* kEnabled = "Enabled";
constexpr const char* kDisabled = "Disabled";
constexpr const char* kArray = "numpy.ndarray";

py::object valueOfNumber(const std::string& text, bool isWhole) {
    char* end = nullptr;
    const double number = PyOS_string_to_double(text.c_str(), &end, nullptr);
    if (PyErr_Occurred() || text.empty() || *end != '\0') {
        PyErr_Clear();
        return toPython(text);
    }
    if (isWhole && std::isfinite(number) && number == std::floor(number)) {
        return py::reinterpret_steal<py::object>(PyLong_FromDouble(number));
    }
    return py::float_(number);
}

PROPERTY_TYPE propertyType(PARAMETER_TYPE type) {
    return type == PARAMETER_TYPE::Integer   ? PROPERTY_TYPE::Integer
           : type == PARAMETER_TYPE::Float   ? PROPERTY_TYPE::Float
           : type == PARAMETER_TYPE::Boolean ? PROPERTY_TYPE::Boolean
                                             : PROPERTY_TYPE::String;
}

} // namespace

py::object toValue(PROPERTY_TYPE type, const std::string& text) {
    switch (type) {
    case PROPERTY_TYPE::Integer:
    case PROPERTY_TYPE::Float:
        return valueOfNumber(text, type == PROPERTY_TYPE::Integer);
    case PROPERTY_TYPE::Boolean:
        if (text == kEnabled || text == kDisabled) {
            return py::bool_(text == kEnabled);
        }
        break;
    case PROPERTY_TYPE::String:
        break;
    }
    return toPython(text);
}

std::string toText(py::handle value) {
    const std::string typeName = Py_TYPE(value.ptr())->tp_name;
    if (PyBool_Check(value.ptr()) || typeName == "numpy.bool_" || typeName == "numpy.bool") {
        return PyObject_IsTrue(value.ptr()) != 0 ? kEnabled : kDisabled;
    }
    if (PyUnicode_Check(value.ptr()) || PyBytes_Check(value.ptr())) {
        return toBytes(value);
    }
    if (typeName == kArray) { // of numbers: each of them has bytes, which are no text
        if (value.attr("ndim").cast<int>() == 0) {
            return toText(value.attr("item")());
        }
        throw py::type_error("A value is one number, not an array.");
    }
    PyObject* number = PyIndex_Check(value.ptr())    ? PyNumber_Index(value.ptr())
                       : PyNumber_Check(value.ptr()) ? PyNumber_Float(value.ptr())
                                                     : nullptr;
    if (number) {
        return py::repr(py::reinterpret_steal<py::object>(number));
    }
    if (PyErr_Occurred()) {
        throw py::error_already_set();
    }
    throw py::type_error("A value is a number, a bool, a str, or bytes.");
}

std::string toParameter(py::handle value) {
    const bool isArray = Py_TYPE(value.ptr())->tp_name == std::string(kArray) && value.attr("ndim").cast<int>() > 0;
    if (isArray || (PyObject_CheckBuffer(value.ptr()) && !PyNumber_Check(value.ptr()))) { // numbers of NumPy have bytes
        return toBytes(value);
    }
    return toText(value);
}

py::object toResults(const std::vector<ParameterDescriptor>& types, const std::vector<std::string>& texts) {
    py::list results;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const PROPERTY_TYPE type = i < types.size() ? propertyType(types[i].m_Type) : PROPERTY_TYPE::String;
        results.append(type == PROPERTY_TYPE::String ? py::object(py::bytes(texts[i])) : toValue(type, texts[i]));
    }
    return results.empty() ? py::none() : results.size() == 1 ? py::object(results[0]) : py::tuple(results);
}

} // namespace PythonBinding
