# SPDX-License-Identifier: Apache-2.0

# Finds what the Python package needs, for all folders; without it, QUILL_BUILD_PYTHON is off.

# An interpreter other than the system's, first in the search path, may lack NumPy: Python_EXECUTABLE names the one to use.
if(NOT Python_EXECUTABLE AND EXISTS /usr/bin/python3)
    set(Python_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python 3.9 QUIET COMPONENTS Interpreter Development.Module)
find_package(pybind11 2.10 CONFIG QUIET)
if(Python_Interpreter_FOUND)
    execute_process(COMMAND "${Python_EXECUTABLE}" -c "import numpy" RESULT_VARIABLE quill_numpy_missing OUTPUT_QUIET ERROR_QUIET)
endif()
if(NOT Python_Development.Module_FOUND OR NOT pybind11_FOUND OR quill_numpy_missing)
    message(STATUS "Python package: left out, since python3-dev, python3-numpy or pybind11-dev is missing")
    set(QUILL_BUILD_PYTHON OFF)
else()
    message(STATUS "Python package: for Python ${Python_VERSION}")
endif()
