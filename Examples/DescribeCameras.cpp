// SPDX-License-Identifier: Apache-2.0

// Lists all cameras, and describes those that can be connected: properties with value, unit and range, functions.

#include <iostream>

#include <Quill.h>

using CameraInterface::Camera;

namespace {

void describeProperty(CameraInterface::Property& property) {
    std::cout << "    " << property.getName() << " = " << property.getValue() << ' ' << property.getUnit();
    if (property.isReadOnly()) {
        std::cout << " (read-only)";
    } else if (property.isDiscrete()) {
        std::cout << " (one of";
        for (const std::string& choice : property.getValueList()) {
            std::cout << ' ' << choice;
        }
        std::cout << ')';
    } else {
        std::cout << " (" << property.getMinimum() << " to " << property.getMaximum() << ')';
    }
    std::cout << '\n';
}

void describe(Camera& camera) {
    camera.connect();
    for (const std::string& name : camera.getSupportedProperties()) {
        describeProperty(camera.getProperty(name));
    }
    for (const std::string& name : camera.getSupportedFunctions()) {
        std::cout << "    " << name << "()\n";
    }
    camera.disconnect();
}

} // namespace

int main() try {
    Camera::initialiseWorkspace();
    for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
        Camera& camera = Camera::getCamera(serialNumber);
        std::cout << serialNumber << "  " << modelName << ", " << getKindName(camera.getKind()) << '\n';
        try {
            describe(camera);
        } catch (const KestrelExceptions::KestrelException& refusal) { // in use elsewhere, or just gone
            std::cout << "    " << refusal.what() << '\n';
        }
    }
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
