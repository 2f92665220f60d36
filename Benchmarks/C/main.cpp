// SPDX-License-Identifier: Apache-2.0

// Compares calls through the C interface with the same calls in C++, as an application makes them, on one camera.

#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <Quill.h>
#include <SoftwareDevices.h>
#include <benchmark/benchmark.h>
#include <quillcamera.h>

#include "Support/RatioBenchmark.h"
#include "Support/Report.h"

namespace {

using namespace Benchmarks;
using CameraInterface::Camera;
using CameraInterface::FrameQueue;
using CameraInterface::WhenFull;
using Clock = std::chrono::steady_clock;

/// Of a call that does something by itself.
constexpr double kLimit = 1.1;
/// Of the shortest calls there are: the text that the caller frees and the camera's handle cost some 30 ns, whatever
/// the call takes.
constexpr double kReadLimit = 1.3;
constexpr std::uint32_t kSerial = 7;
constexpr const char* kSerialText = "7";
constexpr std::size_t kFrames = 1024;

void require(quill_status status) {
    if (status != QUILL_OK) {
        throw std::runtime_error(quill_status_name(status));
    }
}

/// The same camera in both languages.
struct TwoFaces {
    TwoFaces() {
        SoftwareDevices::startEmpty();
        SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
        device.serial = kSerial;
        device.sensorWidth = 64;
        device.sensorHeight = 48;
        SoftwareDevices::plug(device);
        SoftwareDevices::setAsFastAsAsked(kSerial, true);
        require(quill_initialise_workspace(nullptr));
        require(quill_get_camera(kSerialText, &c, nullptr));
        require(quill_camera_connect(c, nullptr));
        cpp = &Camera::getCamera(kSerialText);
    }
    TwoFaces(const TwoFaces&) = delete;
    TwoFaces& operator=(const TwoFaces&) = delete;
    ~TwoFaces() { quill_end_workspace(nullptr); }

    Camera* cpp = nullptr;
    quill_camera c{};
};

std::pair<Variant, Variant> readProperty(const std::shared_ptr<TwoFaces>& camera, const char* name) {
    return {{[=] { benchmark::DoNotOptimize(camera->cpp->getProperty(name).getValue().data()); }}, {[=] {
                char* value = nullptr;
                require(quill_property_get_value(camera->c, name, &value, nullptr));
                benchmark::DoNotOptimize(value);
                quill_free(value);
            }}};
}

/// Takes frames that wait, and only that is timed.
template <typename Size, typename Take>
Variant takeFrames(const std::shared_ptr<TwoFaces>& camera, Size size, Take take) {
    const auto seconds = std::make_shared<double>(0);
    Variant variant;
    variant.pieces = kFrames;
    variant.partSeconds = [seconds] { return *seconds; };
    variant.run = [=] {
        camera->cpp->startStream();
        while (size() < kFrames) {
            std::this_thread::yield();
        }
        camera->cpp->stopStream();
        const auto begin = Clock::now();
        for (std::size_t i = 0; i < kFrames; ++i) {
            take();
        }
        *seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    };
    return variant;
}

/// Each side has the only queue while it is measured: a frame is shared by no one else.
std::pair<Variant, Variant> popFrames(const std::shared_ptr<TwoFaces>& camera) {
    struct Queues {
        std::unique_ptr<FrameQueue> cpp;
        quill_frame_queue c{};
    };
    const auto queues = std::make_shared<Queues>();
    Variant cpp = takeFrames(
        camera, [queues] { return queues->cpp->size(); },
        [queues] {
            const CameraInterface::FrameResult result = queues->cpp->pop();
            benchmark::DoNotOptimize(result.frame.image->getDataAddress());
        });
    cpp.prepare = [=] {
        quill_frame_queue_release(queues->c, nullptr);
        queues->cpp = std::make_unique<FrameQueue>(camera->cpp->openFrameQueue({kFrames, WhenFull::DropNewest, ""}));
    };
    Variant c = takeFrames(
        camera,
        [queues] {
            std::size_t size = 0;
            require(quill_frame_queue_size(queues->c, &size, nullptr));
            return size;
        },
        [queues] {
            quill_frame frame{};
            quill_frame_queue_status status = 0;
            require(quill_frame_queue_pop(queues->c, QUILL_NO_LIMIT, &status, &frame, nullptr));
            benchmark::DoNotOptimize(frame.id);
            require(quill_frame_release(frame, nullptr));
        });
    c.prepare = [=] {
        queues->cpp.reset();
        quill_frame_queue_settings settings = QUILL_FRAME_QUEUE_SETTINGS_INIT;
        settings.capacity = kFrames;
        settings.when_full = QUILL_DROP_NEWEST;
        quill_frame_queue_release(queues->c, nullptr);
        require(quill_camera_open_frame_queue(camera->c, &settings, &queues->c, nullptr));
    };
    return {cpp, c};
}

bool run(bool isShort) {
    const auto camera = std::make_shared<TwoFaces>();
    const Claim claims[] = {
        {"C1", "property of the camera read and freed", "C++", kReadLimit,
         [=] { return readProperty(camera, "Video Exposure"); }},
        {"C1", "property in memory read and freed", "C++", kReadLimit, [=] { return readProperty(camera, "Timeout"); }},
        {"C2", "waiting frame popped and released", "C++", kLimit, [=] { return popFrames(camera); }},
    };
    Report report(false);
    bool allMet = true;
    for (const Claim& claim : claims) {
        const bool met = measureInto(report, claim, claim.limit, isShort ? kShortForm : kFullForm);
        allMet = allMet && met;
    }
    return allMet;
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return run(argumentCount > 1 && std::strcmp(arguments[1], "--short") == 0) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}
