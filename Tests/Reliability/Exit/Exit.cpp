// SPDX-License-Identifier: Apache-2.0

// Exits in the way that its argument names. Whatever runs at that time, the exit code is 0 and nothing is printed.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <Quill.h>
#include <SoftwareDevices.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/Event.h"

namespace {

using CameraInterface::Camera;

constexpr std::uint32_t kSerial = 7;

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

Camera& open(std::uint32_t width = 64, std::uint32_t height = 48) {
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

/// Children of a process in which everything runs: they convert, run a thread of their own, and exit as usual.
void inForkedChildren() {
    constexpr int kChildren = 10;
    static Utilities::Watchdog watchdog; // of the application
    watchdog.start(0, [] { return true; });
    convertLargeImages();
    open().startStream();
    for (int child = 0; child < kChildren; ++child) {
        Imaging::createImage(1024, 1024, {}, 8, true, Imaging::IMAGE_FORMAT::MONO); // leaves memory in the pool
        const pid_t process = fork();
        if (process == 0) {
            bool listIsEmpty = false;
            std::thread([&] { listIsEmpty = Camera::getCamerasList().empty(); }).join();
            convertLargeImages();
            watchdog.restart();
            std::exit(listIsEmpty ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        int status = 0;
        if (waitpid(process, &status, 0) != process || status != 0) {
            std::exit(EXIT_FAILURE);
        }
    }
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
    std::quick_exit(EXIT_SUCCESS);
}

/// Whether an action fails with this sentence.
template <typename Action>
bool failsBecause(const std::string& sentence, Action action) {
    try {
        action();
    } catch (const KestrelExceptions::KestrelException_Stream& failure) {
        return failure.why() == "An error with the video stream occured. " + sentence;
    }
    return false;
}

/// A stream that runs out of memory reports it, and can run again when there is memory.
void underAMemoryLimit() {
#ifndef QUILL_SANITIZED // these need the whole address space
    Camera& camera = open(2560, 1920);
    camera.startStream();
    camera.getImage();
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit limit{pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (40U << 20), RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
    std::vector<std::unique_ptr<Imaging::Image>> images;
    const bool isReported = failsBecause("There was not enough memory for the next frame.", [&] {
        while (true) {
            images.push_back(camera.getImage());
        }
    });
    camera.stopStream();
    const bool isRefused = failsBecause("There is not enough memory for a frame.", [&camera] { camera.startStream(); });
    images.clear();
    camera.getImage();
    if (!isReported || !isRefused) {
        std::exit(EXIT_FAILURE);
    }
#endif
}

struct Case {
    const char* name;
    void (*run)();
};

constexpr Case kCases[] = {
    {"WithAnOpenCamera", withAnOpenCamera},
    {"WithALiveStream", withALiveStream},
    {"WithALateUser", withALateUser},
    {"WhileACallbackRuns", whileACallbackRuns},
    {"InsideACallback", insideACallback},
    {"AtOnce", atOnce},
    {"WithACallbackThatComesBack", withACallbackThatComesBack},
    {"InForkedChildren", inForkedChildren},
    {"UnderAMemoryLimit", underAMemoryLimit},
};

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc == 2 ? argv[1] : "";
    for (const Case& row : kCases) {
        if (name == row.name) {
            row.run();
            return EXIT_SUCCESS;
        }
    }
    return EXIT_FAILURE;
}
