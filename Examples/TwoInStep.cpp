// SPDX-License-Identifier: Apache-2.0

// Streams from two cameras, and pairs the frames that arrived closest together. Arguments: two serial numbers.

#include <chrono>
#include <cmath>
#include <iostream>

#include <Quill.h>

using namespace CameraInterface;
using Milliseconds = std::chrono::duration<double, std::milli>;

namespace {

Camera& open(const std::string& serialNumber) {
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    return camera;
}

Milliseconds between(const Frame& earlier, const Frame& later) {
    return later.information.arrival - earlier.information.arrival;
}

} // namespace

int main(int argumentCount, char* arguments[]) try {
    Camera::initialiseWorkspace();
    Camera& left = open(argumentCount > 2 ? arguments[1] : "41500101");
    Camera& right = open(argumentCount > 2 ? arguments[2] : "41500102");
    FrameQueue leftFrames = left.openFrameQueue({4, WhenFull::DropOldest, "left"});
    FrameQueue rightFrames = right.openFrameQueue({64, WhenFull::DropOldest, "right"}); // of the faster camera
    left.startStream();
    right.startStream();

    Frame candidate = rightFrames.pop().frame;
    for (int pair = 0; pair < 5; ++pair) {
        const FrameResult result = leftFrames.pop();
        if (!result || !candidate.image) {
            throw std::runtime_error(describe(result.status));
        }
        // Goes on while the next frame of the other camera is nearer.
        while (const FrameResult next = rightFrames.pop()) {
            const bool isNearer = std::abs(between(result.frame, next.frame).count()) <
                                  std::abs(between(result.frame, candidate).count());
            if (!isNearer) {
                std::cout << "frames " << result.frame.information.number << " and " << candidate.information.number
                          << ", " << between(result.frame, candidate).count() << " ms apart\n";
                candidate = next.frame;
                break;
            }
            candidate = next.frame;
        }
    }
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
