// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>

#include <pybind11/pybind11.h>

namespace PythonBinding {

/// A failure that the binding itself reports: the name of a class of quillcamera._errors, and what its object says.
/// May be thrown without the interpreter.
struct Failure : std::exception {
    Failure(const char* className, const char* word, const char* sentence)
        : m_Class(className), m_Word(word), m_Sentence(sentence) {}
    const char* what() const noexcept override { return m_Sentence; }

    const char* m_Class;
    const char* m_Word;
    const char* m_Sentence;
};

/// Makes exceptions of the library Python exceptions, in all functions of the module.
void translateErrors();

/// Returns the Python exception of a C++ exception; None for none.
pybind11::object toException(const std::exception_ptr& failure);

} // namespace PythonBinding
