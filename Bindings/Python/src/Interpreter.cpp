// SPDX-License-Identifier: Apache-2.0

#include "Interpreter.h"

#include "Errors.h"

namespace PythonBinding {

namespace py = pybind11;

thread_local int Acquired::s_Depth = 0;

Callback::Callback(const py::object& function)
    : m_Function(new py::object(function), [](py::object* held) {
          if (!Process::present().isAtExit()) { // later there may be no interpreter
              const Acquired interpreter;
              delete held;
          }
      }) {}

void Callback::invoke(const py::tuple& arguments) const {
    const py::object& function = *m_Function;
    function(*arguments);
}

void ProgressFunction::checkForEnd() {
    if (Process::present().isEnding()) {
        throw Failure("CameraGoneError", "CameraGone", "The workspace is ending.");
    }
    const Acquired interpreter;
    if (PyErr_CheckSignals() != 0) {
        throw py::error_already_set();
    }
}

} // namespace PythonBinding
