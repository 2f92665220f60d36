// SPDX-License-Identifier: Apache-2.0

// Exits in the way that its argument names. Whatever runs at that time, the exit code is 0 and nothing is printed.

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <Quill.h>
#include <SoftwareDevices.h>

#include "Reliability/Exit/Exit.h"
#include "Support/Event.h"

using CameraInterface::Camera;

/// Converts on several threads, the library's and OpenCV's.
void convertLargeImages() {
    using Imaging::IMAGE_FORMAT;
    const auto convert = [](IMAGE_FORMAT from, IMAGE_FORMAT to) {
        std::vector<unsigned char> samples(2048 * 1024);
        Imaging::convertImage(Imaging::createImage(2048, 1024, std::move(samples), 8, true, from), to);
    };
    convert(IMAGE_FORMAT::MONO, IMAGE_FORMAT::RGB);
    convert(IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::MONO);
}

Camera& open(std::uint32_t width, std::uint32_t height) {
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
    device.serial = kSerial;
    device.sensorWidth = width;
    device.sensorHeight = height;
    SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(kSerial, true);
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(std::to_string(kSerial));
    camera.connect();
    return camera;
}

namespace {

/// Uses the library after main() has returned and after the library's own actions at exit.
struct LateUser {
    ~LateUser() {
        Camera::getCamerasList();
        Camera::searchForNewCameras();
        if (isSet) {
            convertLargeImages();
            Camera::getCamera(std::to_string(kSerial)).connect();
        }
    }
    bool isSet = false;
};

LateUser g_LateUser;
TestSupport::Event g_Entered;

/// A static object of the application. While it is destroyed, a running stream delivers many more frames.
struct SlowToGo {
    ~SlowToGo() {
        constexpr std::uint64_t kFrames = 50;
        const auto frames = [] { return SoftwareDevices::calls(SoftwareDevices::Operation::sdkCaptureVideoFrames); };
        const std::uint64_t before = frames();
        while (SoftwareDevices::isStreaming(kSerial) && frames() < before + kFrames) {
            std::this_thread::yield();
        }
    }
};

void withAnOpenCamera() {
    open();
}

void withALiveStream() {
    Camera& camera = open();
    // Destroyed after the library's static objects that end a stream, before those of a run.
    static const SlowToGo slowToGo;
    camera.startStream();
    camera.getImage();
}

void withALateUser() {
    convertLargeImages();
    withALiveStream();
    g_LateUser.isSet = true;
}

void withACallbackThatComesBack() {
    struct ComesBack {
        ~ComesBack() { Camera::registerDisconnectCallback({}); }
    };
    open();
    Camera::registerNewConnectCallback([owned = std::make_shared<ComesBack>()] {});
}

void whileACallbackRuns() {
    open().startStream();
    Camera::registerDisconnectCallback([](const std::string&, const std::string&) {
        g_Entered.raise();
        for (int i = 0; i < 200; ++i) {
            Camera::searchForNewCameras();
            Camera::getCamerasList();
        }
    });
    SoftwareDevices::unplug(kSerial);
    std::exit(g_Entered.wait() ? EXIT_SUCCESS : EXIT_FAILURE);
}

void insideACallback() {
    open().startStream();
    Camera::registerDisconnectCallback([](const std::string&, const std::string&) { std::exit(EXIT_SUCCESS); });
    SoftwareDevices::unplug(kSerial);
    while (true) {
        std::this_thread::sleep_for(std::chrono::hours(1)); // the callback exits the process meanwhile
    }
}

void atOnce() {
    withALiveStream();
    exitAtOnce();
}

constexpr WayToExit kWays[] = {
    {"WithAnOpenCamera", withAnOpenCamera},
    {"WithALiveStream", withALiveStream},
    {"WithALateUser", withALateUser},
    {"WhileACallbackRuns", whileACallbackRuns},
    {"InsideACallback", insideACallback},
    {"AtOnce", atOnce},
    {"WithACallbackThatComesBack", withACallbackThatComesBack},
};

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc == 2 ? argv[1] : "";
    std::vector<WayToExit> ways = waysOfThisPlatform();
    ways.insert(ways.end(), std::begin(kWays), std::end(kWays));
    for (const WayToExit& way : ways) {
        if (name == way.name) {
            way.run();
            return EXIT_SUCCESS;
        }
    }
    return EXIT_FAILURE;
}
