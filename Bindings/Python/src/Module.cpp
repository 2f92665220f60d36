// SPDX-License-Identifier: Apache-2.0

#include <pybind11/pybind11.h>

#include "Cameras.h"
#include "Errors.h"
#include "Frames.h"
#include "Images.h"
#include "Network.h"
#include "Process.h"
#include "Programming.h"

PYBIND11_MODULE(_quillcamera, module) {
    module.doc() = "The part of quillcamera that is written in C++.";
    PythonBinding::Process::begin();
    PythonBinding::translateErrors();
    PythonBinding::bindImages(module);
    PythonBinding::bindFrames(module);
    PythonBinding::bindCameras(module);
    PythonBinding::bindProgramming(module);
    PythonBinding::bindNetwork(module);
}
