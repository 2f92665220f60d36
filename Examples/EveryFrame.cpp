// SPDX-License-Identifier: Apache-2.0

#include <iostream>

#include <Quill.h>

using namespace CameraInterface;

int main() try {
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera("41500101");
    camera.connect();
    FrameQueue frames = camera.openFrameQueue({16, WhenFull::DropOldest, "recorder"});
    camera.startStream();
    for (const Frame& frame : frames) {
        std::cout << "frame " << frame.information.number << ": " << frame.image->getWidth() << " x "
                  << frame.image->getHeight() << ", exposed for " << frame.information.exposureMs.value_or(0)
                  << " ms\n";
        if (frame.information.number >= 10) {
            camera.stopStream(); // the loop ends once the queue is empty
        }
    }
    for (const StreamCounter& counter : frames.getCounters()) {
        std::cout << counter.name << ": " << counter.value << '\n';
    }
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
