// SPDX-License-Identifier: Apache-2.0

#include "Programming.h"

#include "CameraHandle.h"
#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using namespace Utilities;

namespace {

using Data = std::vector<unsigned char>;

py::bytes bytesOf(const Data& data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()}; // NOLINT(*-reinterpret-cast): bytes
}

bool compareFlash(CameraHandle& handle, const py::buffer& data, unsigned address, unsigned chunkSize,
                  const py::object& progress) {
    const Data bytes = toByteVector(data);
    const ProgressFunction function(progress);
    const CameraUse use(handle);
    return Programmer::compareFlash(*use, bytes, address, chunkSize, function);
}

using Write = void (*)(CameraInterface::Camera&, Data, const unsigned&, const unsigned&, const unsigned&,
                       std::function<void(double)>);

auto writer(Write write) {
    return [write](CameraHandle& handle, const py::buffer& data, unsigned address, unsigned maximumSize,
                   unsigned chunkSize, const py::object& progress) {
        Data bytes = toByteVector(data);
        const ProgressFunction function(progress);
        const CameraUse use(handle);
        write(*use, std::move(bytes), address, maximumSize, chunkSize, function);
    };
}

void writeFirmwareToRam(CameraHandle& handle, const py::buffer& data, const py::object& progress) {
    Data bytes = toByteVector(data);
    const ProgressFunction function(progress);
    const CameraUse use(handle);
    Programmer::writeFirmwareToRam(*use, std::move(bytes), function);
}

py::dict dictOf(const XsvfReport& report) {
    using namespace py::literals;
    return py::dict("opened"_a = report.opened, "error"_a = static_cast<int>(report.error),
                    "command_count"_a = report.commandCount, "command_offset"_a = report.commandOffset,
                    "data_ended"_a = report.dataEnded, "failed_transfers"_a = report.failedTransfers,
                    "failed_command"_a = report.failedCommand, "failed_offset"_a = report.failedOffset,
                    "camera_gone"_a = report.cameraGone, "expected_tdo"_a = bytesOf(report.expectedTdo),
                    "captured_tdo"_a = bytesOf(report.capturedTdo), "tdo_mask"_a = bytesOf(report.tdoMask),
                    "succeeded"_a = report.succeeded());
}

py::dict play(CameraHandle& handle, const py::buffer& data, const py::object& progress) {
    Data bytes = toByteVector(data);
    const ProgressFunction function(progress);
    XsvfReport report;
    {
        const CameraUse use(handle);
        playXsvf(*use, std::move(bytes), report, function);
    }
    return dictOf(report);
}

py::dict check(const py::buffer& data) {
    Data bytes = toByteVector(data);
    XsvfReport report;
    {
        const Released released;
        report = checkXsvf(std::move(bytes));
    }
    return dictOf(report);
}

py::tuple bootImage(const py::buffer& data) {
    const BootImage image = readBootImage(toByteVector(data));
    py::list sections;
    for (const BootImageSection& section : image.sections) {
        sections.append(py::make_tuple(section.address, section.offset, section.length));
    }
    return py::make_tuple(sections, image.entryAddress, image.size);
}

} // namespace

void bindProgramming(py::module_& module) {
    module.def("compare_flash", &compareFlash);
    module.def("write_buffer_to_flash", writer(&Programmer::writeBufferToFlash));
    module.def("write_firmware_to_flash", writer(&Programmer::writeFirmwareToFlash));
    module.def("write_firmware_to_ram", &writeFirmwareToRam);
    module.def("read_flash_status", [](CameraHandle& handle, unsigned address) {
        return static_cast<int>(Programmer::readFlashStatus(*CameraUse(handle), address));
    });
    module.def("write_flash_status", [](CameraHandle& handle, unsigned address, unsigned char status) {
        Programmer::writeFlashStatus(*CameraUse(handle), address, status);
    });
    module.def("flip_bit_order",
               [](const py::buffer& data) { return bytesOf(Programmer::flipBitOrder(toByteVector(data))); });
    module.def("play_xsvf", &play);
    module.def("can_play_xsvf", [](CameraHandle& handle) { return canPlayXsvf(*CameraUse(handle)); });
    module.def("check_xsvf", &check);
    module.def("read_boot_image", &bootImage);
    module.def("zeph_version", [] { return toPython(getZephVersion()); });
    module.def("is_zeph_installed", &isZephInstalled);
}

} // namespace PythonBinding
