// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "Cameras/GenICam/GenICamLibrary.h"

namespace CameraInterface::GenICam {

namespace {

std::string firstWordOf(const std::filesystem::path& path) {
    std::string word;
    std::ifstream(path) >> word;
    return word;
}

} // namespace

bool isUsb3VisionDeviceAttached() {
    std::error_code failure;
    std::filesystem::directory_iterator entry("/sys/bus/usb/devices", failure);
    // Interfaces, such as "2-1:1.0", are listed beside the devices, which may leave meanwhile.
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::filesystem::path& path = entry->path();
        if (path.filename().string().find(':') == std::string::npos) {
            continue;
        }
        // Miscellaneous class, USB3 Vision subclass: assigned by the USB Implementers Forum.
        if (firstWordOf(path / "bInterfaceClass") == "ef" && firstWordOf(path / "bInterfaceSubClass") == "05") {
            return true;
        }
    }
    return false;
}

} // namespace CameraInterface::GenICam
