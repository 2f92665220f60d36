// SPDX-License-Identifier: Apache-2.0

// Doubles a camera's exposure as far as its range allows, and prints what changes with it. Argument: serial number.

#include <algorithm>
#include <iostream>
#include <string>

#include <Quill.h>

using namespace CameraInterface;

int main(int argumentCount, char* arguments[]) try {
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(argumentCount > 1 ? arguments[1] : "41500101");
    camera.connect();
    camera.registerPropertyChangeCallback([](Property& property) { // on the thread that writes
        std::cout << property.getName() << " is now " << property.getValue() << ' ' << property.getUnit() << '\n';
    });
    Property& exposure = camera.getProperty("Exposure"); // lives as long as the camera
    if (!exposure.isAvailableForWriting()) {
        throw std::runtime_error("The exposure cannot be written now.");
    }
    const double wanted = std::min(2 * std::stod(exposure.getValue()), std::stod(exposure.getMaximum()));
    exposure.setValue(std::to_string(wanted));

    Property& mode = camera.getProperty("Streaming Mode");
    for (const std::string& choice : mode.getValueList()) {
        std::cout << "a choice of " << mode.getName() << ": " << choice << '\n';
    }
    try {
        mode.setValue("Slow motion");
    } catch (const KestrelExceptions::KestrelException& refusal) { // who() is for programs, why() for people
        std::cout << refusal.who() << ": " << refusal.why() << '\n';
    }
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
