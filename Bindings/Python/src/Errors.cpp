// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"

#include <cstring>
#include <stdexcept>
#include <system_error>

#include <Quill.h>

#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using namespace KestrelExceptions;

namespace {

/// Words that have a class of their own.
struct WordClass {
    const char* word;
    const char* className;
};
constexpr WordClass kWordClasses[] = {
    {"CameraNotFound", "CameraNotFoundError"},         {"CameraConnection", "CameraConnectionError"},
    {"PropertyUnsupported", "PropertyNotFoundError"},  {"PropertyReadOnly", "PropertyReadOnlyError"},
    {"PropertyValueConversion", "PropertyValueError"}, {"FunctionUnsupported", "FunctionNotFoundError"},
    {"StreamTimeout", "StreamTimeoutError"},           {"StreamStopped", "StreamStoppedError"},
    {"NetworkTimeout", "NetworkTimeoutError"},
};

const char* classOf(const KestrelException& failure) {
    const char* gone = describe(CameraInterface::FrameQueueStatus::CameraGone);
    const auto* stream = dynamic_cast<const KestrelException_Stream*>(&failure);
    if (stream && std::strstr(failure.why(), gone)) {
        return "CameraGoneError";
    }
    for (const WordClass& entry : kWordClasses) {
        if (std::strcmp(entry.word, failure.who()) == 0) {
            return entry.className;
        }
    }
    return stream                                                               ? "StreamError"
           : dynamic_cast<const KestrelException_Camera*>(&failure)             ? "CameraError"
           : dynamic_cast<const KestrelException_CameraState*>(&failure)        ? "CameraStateError"
           : dynamic_cast<const KestrelException_Function*>(&failure)           ? "FunctionError"
           : dynamic_cast<const KestrelException_InvalidArgument*>(&failure)    ? "InvalidArgumentError"
           : dynamic_cast<const KestrelException_Property*>(&failure)           ? "PropertyError"
           : dynamic_cast<const KestrelException_PropertyComparison*>(&failure) ? "PropertyComparisonError"
                                                                                : "Error";
}

py::object makeError(const char* className, const std::string& sentence, const std::string& word = "",
                     const std::string& where = "") {
    const py::object type = py::module_::import("quillcamera._errors").attr(className);
    return type(toPython(sentence), toPython(word), toPython(where));
}

void setError(const py::object& error) {
    PyErr_SetObject(py::type::handle_of(error).ptr(), error.ptr());
}

void translateError(std::exception_ptr failure) { // NOLINT(performance-unnecessary-value-param): the signature is given
    if (!failure) {
        return;
    }
    try {
        std::rethrow_exception(failure);
    } catch (const KestrelException& error) {
        setError(makeError(classOf(error), error.why(), error.who(), error.where()));
    } catch (const Failure& error) {
        setError(makeError(error.m_Class, error.m_Sentence, error.m_Word));
    } catch (const win32::RegistryError& error) {
        const py::object raised = makeError("RegistryError", error.what());
        raised.attr("code") = error.m_ErrorCode;
        setError(raised);
    } catch (const std::out_of_range& error) { // a number in a text; an IndexError by default
        PyErr_SetString(PyExc_ValueError, error.what());
    } catch (const std::system_error& error) {
        errno = error.code().value();
        PyErr_SetFromErrno(PyExc_OSError);
    }
}

} // namespace

void translateErrors() {
    py::register_exception_translator(translateError);
}

py::object toException(const std::exception_ptr& failure) {
    if (!failure) {
        return py::none();
    }
    try {
        std::rethrow_exception(failure);
    } catch (const py::error_already_set& error) {
        return error.value();
    } catch (const KestrelException&) {
        translateError(failure);
    } catch (const Failure&) {
        translateError(failure);
    } catch (const std::exception& error) {
        return py::reinterpret_borrow<py::object>(PyExc_RuntimeError)(toPython(error.what()));
    }
    return py::error_already_set().value();
}

} // namespace PythonBinding
