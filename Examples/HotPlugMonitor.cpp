// SPDX-License-Identifier: Apache-2.0

// Prints cameras as they come and go, until Enter is pressed or the input ends.

#include <iostream>
#include <map>
#include <mutex>

#include <Quill.h>

using CameraInterface::Camera;

int main() try {
    // The callbacks run on threads of the library.
    std::mutex mutex;
    std::map<std::string, std::string> known;
    const auto showArrivals = [&] {
        const std::lock_guard lock(mutex);
        const auto present = Camera::getCamerasList();
        for (const auto& [serialNumber, modelName] : present) {
            if (known.count(serialNumber) == 0) {
                std::cout << "+ " << serialNumber << "  " << modelName << std::endl;
            }
        }
        known = present;
    };

    Camera::registerNewConnectCallback(showArrivals);
    Camera::registerDisconnectCallback([&](const std::string& modelName, const std::string& serialNumber) {
        const std::lock_guard lock(mutex);
        known.erase(serialNumber);
        std::cout << "- " << serialNumber << "  " << modelName << std::endl;
    });
    Camera::initialiseWorkspace();
    showArrivals();

    std::cin.get();
    Camera::unitialisedWorkpace(); // no callback runs after it
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
