// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdint>
#include <string>

#include <Quill.h>
#include <SoftwareDevices.h>
#include <pybind11/pybind11.h>

namespace {

using CameraInterface::Camera;

double secondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Takes frames of a stream, and looks at the first byte of each.
double takeFrames(const std::string& serialNumber, int count) {
    Camera& camera = Camera::getCamera(serialNumber);
    CameraInterface::FrameQueue frames = camera.openFrameQueue({8, CameraInterface::WhenFull::HoldBack, ""});
    unsigned sum = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        sum += *frames.pop().frame.image->getDataAddress();
    }
    const double seconds = secondsSince(begin);
    return sum != 0 ? seconds : 0;
}

/// Reads a number.
double readProperty(const std::string& serialNumber, const std::string& name, int count) {
    Camera& camera = Camera::getCamera(serialNumber);
    double sum = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        sum += std::stod(camera.getProperty(name).getValue());
    }
    const double seconds = secondsSince(begin);
    return sum > 0 ? seconds : 0;
}

} // namespace

/// The same in C++ as compare.py does in Python, with the cameras that it has opened.
PYBIND11_MODULE(_quill_reference, module) {
    const pybind11::call_guard<pybind11::gil_scoped_release> released;
    module.def("take_frames", &takeFrames, released);
    module.def("read_property", &readProperty, released);
    module.def("set_as_fast_as_asked", [](std::uint32_t serial) { SoftwareDevices::setAsFastAsAsked(serial, true); });
}
