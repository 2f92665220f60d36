// SPDX-License-Identifier: Apache-2.0

// Streams, and prints once a second how fast frames arrive and what was lost. Arguments: serial number, seconds.

#include <chrono>
#include <iostream>
#include <thread>

#include <Quill.h>

using namespace CameraInterface;

int main(int argumentCount, char* arguments[]) try {
    const std::string serialNumber = argumentCount > 1 ? arguments[1] : "41500102";
    const int seconds = argumentCount > 2 ? std::stoi(arguments[2]) : 3;

    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    camera.setFrameCallback([](const Frame& /*frame*/) { /* where an application looks at each frame */ });
    camera.startStream();
    for (int second = 1; second <= seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        StreamStatistics& statistics = camera.getStreamStatistics();
        std::cout << statistics.getFramesPerSecond(STREAM_TYPE::Received) << " frames/s, captured in "
                  << statistics.getCaptureTime() * 1000 << " ms";
        for (const StreamCounter& counter : camera.getStreamCounters()) {
            if (counter.isLoss && counter.value > 0) {
                std::cout << ", " << counter.name << ": " << counter.value;
            }
        }
        std::cout << '\n';
    }
    camera.stopStream();
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
