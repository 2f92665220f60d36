// SPDX-License-Identifier: Apache-2.0

#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;

namespace {

constexpr const char* kOtherBytes = "surrogateescape";

/// The bytes of an object that has a buffer, for as long as this lives.
class ContiguousBytes {
public:
    explicit ContiguousBytes(py::handle owner) {
        if (PyObject_GetBuffer(owner.ptr(), &m_View, PyBUF_SIMPLE) != 0) {
            throw py::error_already_set();
        }
    }
    ContiguousBytes(const ContiguousBytes&) = delete;
    ContiguousBytes& operator=(const ContiguousBytes&) = delete;
    ~ContiguousBytes() { PyBuffer_Release(&m_View); }

    const char* begin() const { return static_cast<const char*>(m_View.buf); }
    const char* end() const { return begin() + m_View.len; }

private:
    Py_buffer m_View{};
};

} // namespace

py::str toPython(const std::string& text) {
    PyObject* result = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), kOtherBytes);
    if (!result) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(result);
}

py::list toPython(const std::vector<std::string>& texts) {
    py::list result;
    for (const std::string& text : texts) {
        result.append(toPython(text));
    }
    return result;
}

py::dict toPython(const std::map<std::string, std::string>& texts) {
    py::dict result;
    for (const auto& [key, text] : texts) {
        result[toPython(key)] = toPython(text);
    }
    return result;
}

std::string toBytes(py::handle value) {
    if (PyUnicode_Check(value.ptr())) {
        const auto bytes =
            py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(value.ptr(), "utf-8", kOtherBytes));
        if (!bytes) {
            throw py::error_already_set();
        }
        const ContiguousBytes encoded(bytes);
        return {encoded.begin(), encoded.end()};
    }
    const ContiguousBytes bytes(value);
    return {bytes.begin(), bytes.end()};
}

std::vector<unsigned char> toByteVector(const py::buffer& data) {
    const ContiguousBytes bytes(data);
    return {bytes.begin(), bytes.end()};
}

} // namespace PythonBinding
