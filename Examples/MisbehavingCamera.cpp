// SPDX-License-Identifier: Apache-2.0

// Tests a program against cameras that misbehave: frames are lost on their way, a call fails, the camera is unplugged.

#include <iostream>

#include <Quill.h>
#include <SoftwareDevices.h>

using namespace CameraInterface;
namespace {

/// The program under test: counts frames until the stream ends.
FrameQueueStatus run(Camera& camera, int frames) {
    FrameQueue queue = camera.openFrameQueue();
    camera.startStream();
    for (int frame = 0; frame < frames; ++frame) {
        if (const FrameResult result = queue.pop(); !result) {
            return result.status;
        }
    }
    camera.stopStream();
    return FrameQueueStatus::Frame;
}

void expect(bool isTrue, const char* what) {
    if (!isTrue) {
        throw std::runtime_error(std::string("not true: ") + what);
    }
    std::cout << "true: " << what << '\n';
}

} // namespace

int main() try {
    SoftwareDevices::startEmpty(); // only the cameras of this test
    const std::uint32_t serial = SoftwareDevices::plug(SoftwareDevices::defaultDevices().at(1));
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(std::to_string(serial));
    camera.connect();
    SoftwareDevices::dropFrames(serial, 3);
    expect(run(camera, 5) == FrameQueueStatus::Frame, "the program goes on after lost frames");

    using SoftwareDevices::Operation;
    SoftwareDevices::failNext(serial, Operation::sdkStreamVideoControl, 1, SoftwareDevices::kInternalError);
    try {
        run(camera, 1);
        expect(false, "a stream that does not start is reported");
    } catch (const KestrelExceptions::KestrelException& failure) {
        expect(std::string(failure.who()) == "StartStream", "a stream that does not start is reported");
    }

    SoftwareDevices::unplugDuring(serial, Operation::sdkCaptureVideoFrames, 3);
    expect(run(camera, 1000) == FrameQueueStatus::CameraGone, "a camera that is unplugged ends the wait");
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
