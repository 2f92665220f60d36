// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <thread>

#include <malloc.h>

#include "Cameras/Camera.h"
#include "Claims.h"
#include "Imaging/BufferPool.h"
#include "Imaging/Conversion.h"
#include "Imaging/Image.h"
#include "PropertyNames.h"
#include "Support/DescriptionFiles.h"
#include "Support/SdkCamera.h"

namespace Benchmarks {

namespace {

using namespace CameraInterface;
using namespace std::chrono_literals;

/// Below this, a waiting process is not noticeable.
constexpr double kIdlePercent = 1;
constexpr double kFirstFrameMilliseconds = 30;
constexpr double kFramesPerSecond = 1000;
/// The frame, its result, and the buffer into which the worker captures the next frame.
constexpr double kCaptureMemoryLimit = 1.5;

/// The load of the process in percent of one core while this thread sleeps.
double percentWhileSleeping(std::chrono::seconds time) {
    const auto seconds = [](clockid_t clock) {
        timespec now{};
        clock_gettime(clock, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    };
    const double busy = seconds(CLOCK_PROCESS_CPUTIME_ID);
    const double begin = seconds(CLOCK_MONOTONIC);
    std::this_thread::sleep_for(time);
    return 100 * (seconds(CLOCK_PROCESS_CPUTIME_ID) - busy) / (seconds(CLOCK_MONOTONIC) - begin);
}

/// Long enough for a search for new cameras, which comes every five seconds.
double idleEnumeration() {
    constexpr int kSimulatedCameras = 1000;
    endList();
    SoftwareDevices::startEmpty();
    SoftwareDevices::plugDefaultDevices();
    useDevices(true);
    useCameraList(kSimulatedCameras);
    Camera::initialiseWorkspace();
    const std::size_t cameras = Camera::getCamerasList().size();
    const double percent = percentWhileSleeping(6s);
    endList();
    useDevices(false);
    if (cameras != kSimulatedCameras + SoftwareDevices::defaultDevices().size()) {
        throw std::logic_error("Not all cameras were found.");
    }
    return percent;
}

/// A stream in still mode that waits for a trigger.
double idleStream() {
    SdkCamera camera;
    camera->getProperty(PropertyNames::kStreamingMode).setValue("Still");
    camera->getProperty(PropertyNames::kHardwareTrigger).setValue("Enabled");
    camera->startStream();
    std::this_thread::sleep_for(500ms); // the device computes ahead what its first frame needs
    const double percent = percentWhileSleeping(3s);
    camera->stopStream();
    return percent;
}

/// Frames of a camera that delivers without delay, numbered in their first bytes. Static, because the SDK's operations
/// have no context.
struct NumberedFrames {
    static constexpr std::uint32_t kWidth = 64;
    static constexpr std::uint32_t kHeight = 48;

    static void replace(OrvexAdapter::OrvexApi& api) {
        api.sdkCaptureVideoFrames = [](void* /*handle*/, std::uint32_t /*count*/, std::uint8_t* buffer) {
            std::memcpy(buffer, &++s_Number, sizeof(s_Number));
            return std::uint32_t{1};
        };
        api.sdkGetVideoImageFormat = [](void* /*handle*/, ORVEX_IMAGE_FORMAT* format) {
            *format = {};
            format->size = sizeof(ORVEX_IMAGE_FORMAT);
            format->width = kWidth;
            format->height = kHeight;
            format->imageSize = kWidth * kHeight;
            return std::uint32_t{1};
        };
    }

    inline static std::uint32_t s_Number = 0; // used by the worker only
};

/// The time for a thousand small frames, in seconds.
double secondsOfSmallFrames() {
    SdkCamera camera(NumberedFrames::replace);
    camera->getProperty(PropertyNames::kWidth).setValue(std::to_string(NumberedFrames::kWidth));
    camera->getProperty(PropertyNames::kHeight).setValue(std::to_string(NumberedFrames::kHeight));
    camera->startStream();
    const auto begin = std::chrono::steady_clock::now();
    std::uint32_t last = 0;
    for (int frame = 0; frame < static_cast<int>(kFramesPerSecond); ++frame) {
        std::uint32_t number = 0;
        std::memcpy(&number, camera->getImage()->getDataAddress(), sizeof(number));
        if (number <= last) {
            throw std::logic_error("Frames came out of order.");
        }
        last = number;
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    camera->stopStream();
    return time.count();
}

/// The time from the start of a stream to its first frame, from a device of 5 megapixels that nobody has used yet and
/// that does not wait for its exposure and frame rate.
double millisecondsToFirstFrame() {
    constexpr int kDevices = 15;
    std::vector<double> times;
    for (int device = 0; device < kDevices; ++device) {
        SdkCamera camera;
        SoftwareDevices::setAsFastAsAsked(SoftwareDevices::defaultDevices().front().serial, true);
        const auto begin = std::chrono::steady_clock::now();
        camera->startStream();
        camera->getImage();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
        camera->stopStream();
    }
    return median(times);
}

std::size_t peakBytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    std::size_t kilobytes = 0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kilobytes;
    return kilobytes * 1024;
}

/// The peak memory of the process while a 20-megapixel frame is captured and demosaiced, as a multiple of frame and
/// result.
double memoryOfLargeImage() {
    constexpr std::uint32_t kWidth = 5472;
    constexpr std::uint32_t kHeight = 3648;
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices().front();
    device.sensorWidth = kWidth;
    device.sensorHeight = kHeight;
    const auto replace = [](OrvexAdapter::OrvexApi& api) {
        api.sdkCaptureVideoFrames = [](void* /*handle*/, std::uint32_t /*count*/, std::uint8_t* buffer) {
            std::memset(buffer, 1, std::size_t{kWidth} * kHeight);
            return std::uint32_t{1};
        };
        api.sdkGetVideoImageFormat = [](void* /*handle*/, ORVEX_IMAGE_FORMAT* format) {
            *format = {};
            format->size = sizeof(ORVEX_IMAGE_FORMAT);
            format->width = kWidth;
            format->height = kHeight;
            format->imageSize = kWidth * kHeight;
            return std::uint32_t{1};
        };
    };
    SdkCamera camera(replace, device);
    while (Imaging::BufferPool::instance().keptBytes() > 0) {
        std::this_thread::sleep_for(100ms); // lets memory of other claims be freed
    }
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5; // resets the peak to the present use
    const std::size_t before = peakBytes();
    const auto frame = camera->getImage();
    const auto result = Imaging::convertImage(frame, Imaging::IMAGE_FORMAT::BGR);
    return static_cast<double>(peakBytes() - before) /
           static_cast<double>(frame->getImageSize() + result->getImageSize());
}

} // namespace

std::vector<Claim> processClaims(Scope scope) {
    std::vector<Claim> claims{countingClaim("P24", "memory of 20 MP captured and demosaiced", "x frame, result",
                                            kCaptureMemoryLimit, memoryOfLargeImage)};
    if (scope == Scope::Short) {
        return claims; // the others are not ratios and depend on the machine
    }
    claims.push_back(countingClaim("P20", "idle, 3 devices and 1000 simulated cameras", "% of a core", kIdlePercent,
                                   idleEnumeration));
    claims.push_back(
        countingClaim("P21", "idle stream, waiting for a trigger", "% of a core", kIdlePercent, idleStream));
    claims.push_back(countingClaim("P32", "first frame of a device in software, 5 MP", "milliseconds",
                                   kFirstFrameMilliseconds, millisecondsToFirstFrame));
    claims.push_back(
        countingClaim("P22", "1000 small frames of a stream, in order", "seconds", 1, secondsOfSmallFrames));
    return claims;
}

} // namespace Benchmarks
