// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Exit/Unload.h"

#include <cstdlib>

#include <SoftwareDevices.h>

int main(int argc, char** argv) {
    if (argc != 3) {
        return EXIT_FAILURE;
    }
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
    device.sensorWidth = 1280;
    device.sensorHeight = 1024;
    const std::uint32_t serial = SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
    return unloadsAgainAndAgain(argv[1], argv[2], serial) ? EXIT_SUCCESS : EXIT_FAILURE;
}
