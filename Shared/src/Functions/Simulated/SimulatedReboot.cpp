#include "Functions/Simulated/SimulatedReboot.h"

#include <stdexcept>

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Exceptions/Raise.h"

namespace CameraInterface::SimulatedAdapter {

std::vector<std::string> SimulatedReboot::perform(std::vector<std::string>& parameters) {
    requireParameters(parameters, 1, QUILL_HERE);
    const std::string& mode = parameters[0];
    if (mode != "Bootloader" && mode != "Firmware") {
        throw std::invalid_argument("Reboot mode not valid.");
    }
    camera().setBootMode(mode);
    return {};
}

} // namespace CameraInterface::SimulatedAdapter
