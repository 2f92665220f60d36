// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <stdexcept>
#include <string>

#include <SoftwareDevices.h>
#include <pybind11/pybind11.h>

namespace {

namespace Devices = SoftwareDevices;

Devices::Operation operationNamed(const std::string& name) {
    for (std::uint32_t number = 0; number < Devices::kOperationCount; ++number) {
        if (name == Devices::operationName(static_cast<Devices::Operation>(number))) {
            return static_cast<Devices::Operation>(number);
        }
    }
    throw std::invalid_argument("There is no operation " + name + ".");
}

/// Plugs in a copy of a default device with a sensor of one size, which delivers frames as fast as they are asked for.
void plug(std::uint32_t serial, std::size_t like, std::uint32_t width, std::uint32_t height, bool bigEndian) {
    Devices::DeviceDescription description = Devices::defaultDevices().at(like);
    description.serial = serial;
    description.sensorWidth = width;
    description.sensorHeight = height;
    description.bigEndian = bigEndian;
    description.noise = 0;
    Devices::plug(description);
    Devices::setAsFastAsAsked(serial, true);
}

} // namespace

/// The devices in software, for tests in Python.
PYBIND11_MODULE(_quill_devices, module) {
    namespace py = pybind11;
    module.def("start_empty", &Devices::startEmpty);
    module.def("plug", &plug, py::arg("serial"), py::arg("like") = 0, py::arg("width") = 64, py::arg("height") = 48,
               py::arg("big_endian") = false);
    module.def("plug_gige", [] {
        Devices::DeviceDescription description = Devices::gigeDevice();
        description.interfaceNumber = 2; // one that is searched for cameras
        return Devices::plug(description);
    });
    module.def("fail_next", [](std::uint32_t serial, const std::string& operation, std::uint32_t error) {
        Devices::failNext(serial, operationNamed(operation), 1, error);
    });
    module.def("unplug", &Devices::unplug);
    module.def("replug", &Devices::replug);
    module.def("is_streaming", &Devices::isStreaming);
    module.def("set_as_fast_as_asked", &Devices::setAsFastAsAsked);
    module.def("drop_frames", &Devices::dropFrames);
    module.def("delay", [](std::uint32_t serial, const std::string& operation, int milliseconds) {
        Devices::delay(serial, operationNamed(operation), std::chrono::milliseconds(milliseconds));
    });
    module.def("clear_faults", &Devices::clearFaults);
}
