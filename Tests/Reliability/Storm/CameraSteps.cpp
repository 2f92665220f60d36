// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Storm/CameraSteps.h"

#include <array>
#include <chrono>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <SoftwareDevices.h>

namespace Storm {

using CameraInterface::Camera;
using CameraInterface::FrameQueue;
using CameraInterface::Property;
using CameraInterface::WhenFull;

namespace {

void connectAndDisconnect(Camera& camera, Random& random) {
    camera.connect();
    if (below(random, 2) == 0) {
        camera.disconnect();
    }
}

void suspendAndResume(Camera& camera, Random&) {
    camera.connect();
    camera.suspend();
    camera.connect();
}

void read(Camera& camera, Random& random) {
    camera.connect();
    const auto names = camera.getSupportedProperties();
    for (int i = 0; i < 8 && !names.empty(); ++i) {
        Property& property = camera.getProperty(names[below(random, names.size())]);
        tolerant([&] { property.getValue(); });
        tolerant([&] { property.getMaximum(); });
        tolerant([&] { property.getValueList(); });
    }
    camera.getSupportedFunctions();
    camera.getState();
}

void write(Camera& camera, Random& random) {
    camera.connect();
    camera.registerPropertyChangeCallback([](Property& property) {
        ++tally().callbacks;
        tolerant([&] { property.getValue(); });
    });
    const auto names = camera.getSupportedProperties();
    for (int i = 0; i < 4 && !names.empty(); ++i) {
        Property& property = camera.getProperty(names[below(random, names.size())]);
        tolerant([&] { property.setValue(below(random, 2) == 0 ? property.getDefault() : property.getMaximum()); });
    }
    camera.registerPropertyChangeCallback({});
}

/// Truncates frames, and lets the device refuse to stop.
void disturb(Camera& camera, Random& random) {
    using SoftwareDevices::Operation;
    constexpr std::array<Operation, 4> kEndings{Operation::sdkStreamVideoControl, Operation::sdkDisableStillMode,
                                                Operation::sdkRemoveStreamingCallback,
                                                Operation::sdkRemoveStillCallback};
    const auto serial = static_cast<std::uint32_t>(std::stoul(camera.getSerialNumber()));
    SoftwareDevices::truncateFrames(serial, 2, 100);
    SoftwareDevices::failNext(serial, kEndings[below(random, kEndings.size())], 1, SoftwareDevices::kInternalError);
}

void stream(Camera& camera, Random& random) {
    camera.connect();
    camera.getProperty("Timeout").setValue("200");
    if (below(random, 4) == 0) {
        disturb(camera, random);
    }
    camera.getProperty("Streaming Mode").setValue(below(random, 2) == 0 ? "Video" : "Still");
    if (below(random, 2) == 0) {
        camera.startStream();
    }
    for (std::size_t frame = below(random, 4); frame < 4; ++frame) {
        const auto image = camera.getImage();
        camera.convertImage(image, below(random, 2) == 0 ? Imaging::IMAGE_FORMAT::BGR : Imaging::IMAGE_FORMAT::RGBA);
    }
    if (below(random, 2) == 0) {
        camera.stopStream(); // otherwise it continues during the next step
    }
}

/// Opens a queue that outlives the step, and often its camera, and takes frames from an older one.
void queueFrames(Camera& camera, Random& random) {
    static std::mutex mutex;
    static std::deque<FrameQueue> queues;
    constexpr std::array<WhenFull, 3> kPolicies{WhenFull::DropOldest, WhenFull::DropNewest, WhenFull::HoldBack};
    camera.connect();
    if (below(random, 2) == 0) {
        camera.setFrameCallback([](const CameraInterface::Frame&) { ++tally().callbacks; });
    }
    FrameQueue fresh = camera.openFrameQueue({1 + below(random, 4), kPolicies[below(random, kPolicies.size())], {}});
    camera.startStream();
    CameraInterface::FrameInformation last;
    for (int i = 0; i < 4; ++i) {
        if (const auto result = fresh.pop(std::chrono::milliseconds(50))) {
            const auto& next = result.frame.information;
            require(next.run > last.run || (next.run == last.run && next.number > last.number), "frames out of order");
            last = next;
        }
    }
    const std::lock_guard lock(mutex);
    queues.push_back(std::move(fresh));
    queues[below(random, queues.size())].tryPop();
    if (queues.size() > 4) {
        queues.erase(queues.begin() + static_cast<std::ptrdiff_t>(below(random, queues.size())));
    }
}

void changeMode(Camera& camera, Random& random) {
    camera.connect();
    tolerant([&] { camera.getProperty("USB3 Vision Mode").setValue(below(random, 2) == 0 ? "Enabled" : "Disabled"); });
    std::vector<std::string> mode{"Firmware"};
    camera.perform("Reboot", mode);
    // It may return as another kind before the next check.
    switch (below(random, 4)) {
    case 0:
        camera.disconnect();
        break;
    case 1:
        camera.suspend();
        camera.connect();
        break;
    default:
        break;
    }
}

void flash(Camera& camera, Random& random) {
    camera.connect();
    std::vector<std::string> place{std::to_string(below(random, 1 << 16)), "64"};
    camera.perform("Read Flash", place);
}

} // namespace

const std::array<CameraStep, 9> kCameraSteps{{
    {connectAndDisconnect, false},
    {suspendAndResume, false},
    {read, false},
    {write, false},
    {stream, false},
    {stream, false},
    {queueFrames, false},
    {flash, false},
    {changeMode, true},
}};

} // namespace Storm
