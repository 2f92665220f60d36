// SPDX-License-Identifier: Apache-2.0

#include "Support/FlatDeviceFixture.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <future>
#include <thread>

#include "Support/Event.h"

namespace {

using namespace SoftwareDevices;
using namespace TestSupport;

struct SoftwareCapture : FlatDeviceFixture {
    /// Starts a capture on another thread; returns when the call has reached the device.
    std::future<std::uint32_t> beginCapture(bool still) {
        const Operation operation = still ? Operation::sdkCaptureStillFrame : Operation::sdkCaptureVideoFrames;
        const std::uint64_t before = calls(operation);
        auto result = std::async(std::launch::async, [this, still] {
            Bytes frame(24 * 16 * 2);
            const bool done =
                still ? sdkCaptureStillFrame(handle, frame.data()) : sdkCaptureVideoFrames(handle, 1, frame.data());
            return done ? kNoError : sdkGetLastErrorForCamera(handle);
        });
        while (calls(operation) == before) {
            std::this_thread::yield();
        }
        return result;
    }
    ORVEX_SNAPSHOT stillSettings() const {
        ORVEX_SNAPSHOT settings{10, 1, 1, 1, 1, 1, 0, 0, 0, -1, {}, 0, 0, 0, {}};
        settings.format = {0, 0, 24, 16, 0, 1, 0, 1, 0};
        return settings;
    }
};

TEST_F(SoftwareCapture, NoiseDiffersFromFrameToFrameAndRepeatsWithItsSeed) {
    DeviceDescription device = smallDevice(ColorFormat::RGGB);
    device.noise = 1;
    const auto twoFrames = [&](std::uint32_t seed) {
        device.noiseSeed = seed;
        open(device);
        Bytes frames(2 * 24 * 16);
        EXPECT_TRUE(sdkStreamVideoControl(handle, 1, 0) && sdkCaptureVideoFrames(handle, 2, frames.data()));
        return frames;
    };
    const Bytes first = twoFrames(1);
    EXPECT_FALSE(std::equal(first.begin(), first.begin() + 24 * 16, first.begin() + 24 * 16));
    EXPECT_EQ(first, twoFrames(1));
    EXPECT_NE(first, twoFrames(2));
}

TEST_F(SoftwareCapture, WhoeverEndsACaptureGivesItItsCode) {
    const struct {
        const char* name;
        std::function<void(void*)> end;
        std::uint32_t code;
    } cases[] = {{"cancel", [](void* h) { sdkCancelVideoCapture(h), sdkCancelStillCapture(h); }, kCaptureEnded},
                 {"stop", [](void* h) { sdkStreamVideoControl(h, 0, 0), sdkDisableStillMode(h); }, kCaptureEnded},
                 {"unplug", [](void*) { unplug(kSerial); }, kCameraGone}};
    for (const bool still : {false, true}) {
        for (const auto& [name, end, code] : cases) {
            open(smallDevice(ColorFormat::MONO));
            setAsFastAsAsked(kSerial, false);
            setProperty(kSerial, {20, 1e6f, 0, 1e6f, 10}); // the next frame is a quarter of an hour away
            ORVEX_SNAPSHOT settings = stillSettings();
            settings.exposure = 1e6f;
            ASSERT_TRUE(still ? sdkEnableStillMode(handle, &settings) : sdkStreamVideoControl(handle, 1, 0));
            auto blocked = beginCapture(still);
            end(handle);
            EXPECT_EQ(blocked.get(), code) << name << still;
            EXPECT_EQ(beginCapture(still).get(), code) << "captures stay ended: " << name << still;
            EXPECT_TRUE(sdkCameraClose(handle)) << name;
            EXPECT_FALSE(sdkCameraClose(handle)) << "stale: " << name;
        }
    }
}

TEST_F(SoftwareCapture, StillsAreCheckedTriggeredAndTimed) {
    open(smallDevice(ColorFormat::RGGB));
    Bytes frame(24 * 16);
    const std::function<void(ORVEX_SNAPSHOT&)> spoil[] = {
        [](auto& s) { s.format.width = 26; }, [](auto& s) { s.exposure = -1; }, [](auto& s) { s.gainBlue = NAN; },
        [](auto& s) { s.shutterType = 1; }};
    for (const auto& change : spoil) {
        ORVEX_SNAPSHOT settings = stillSettings();
        change(settings);
        EXPECT_FALSE(sdkEnableStillMode(handle, &settings));
        EXPECT_EQ(sdkGetLastErrorForCamera(handle), kInvalidStillFormat);
    }
    ORVEX_SNAPSHOT settings = stillSettings();
    settings.useHardwareTrigger = 1;
    settings.timeout = 1;
    EXPECT_FALSE(triggerStill(kSerial)) << "no capture waits for a trigger yet";
    ASSERT_TRUE(sdkEnableStillMode(handle, &settings));
    EXPECT_FALSE(sdkCaptureStillFrame(handle, frame.data()));
    EXPECT_EQ(sdkGetLastErrorForCamera(handle), kTimedOut);
    EXPECT_TRUE(triggerStill(kSerial));
    EXPECT_TRUE(sdkCaptureStillFrame(handle, frame.data()));
    EXPECT_FALSE(sdkCaptureStillFrame(handle, frame.data())) << "one frame for one pulse";
    setAsFastAsAsked(kSerial, false);
    settings = stillSettings();
    settings.exposure = 30;
    ASSERT_TRUE(sdkEnableStillMode(handle, &settings));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(sdkCaptureStillFrame(handle, frame.data()));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
}

struct Listener {
    std::function<void()> action;
    TestSupport::Event frames{};
};

void onFrame(void* context, std::uint32_t, std::uint32_t) {
    Listener& listener = *static_cast<Listener*>(context);
    listener.action();
    listener.frames.raise();
}

TEST_F(SoftwareCapture, CallbacksRunForEveryFrameAndRemovalWaitsForThem) {
    open(smallDevice(ColorFormat::MONO));
    setAsFastAsAsked(kSerial, false); // frames arrive whether or not they are captured
    const std::uint64_t removals = calls(Operation::sdkRemoveStreamingCallback);
    std::int32_t ownId = 0;
    std::atomic<bool> returned{true};
    Listener once{[&] { sdkRemoveStreamingCallback(handle, ownId); }};
    Listener still{[] {}};
    Listener slow{[&] {
        returned = false;
        while (slow.frames.count() >= 20 && calls(Operation::sdkRemoveStreamingCallback) < removals + 2) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2)); // a removal that does not wait returns meanwhile
        returned = true;
    }};
    const std::int32_t slowId = sdkAddStreamingCallback(handle, onFrame, &slow);
    const std::int32_t stillId = sdkAddStillCallback(handle, onFrame, &still);
    ownId = sdkAddStreamingCallback(handle, onFrame, &once);
    ASSERT_TRUE(sdkSetProperty(handle, 20, 1, 0) && sdkStreamVideoControl(handle, 1, 0));
    EXPECT_TRUE(slow.frames.wait(20));
    EXPECT_TRUE(sdkRemoveStreamingCallback(handle, slowId));
    EXPECT_TRUE(returned);
    const int atRemoval = slow.frames.count();
    Bytes frame(24 * 16);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(sdkCaptureVideoFrames(handle, 1, frame.data()));
    }
    EXPECT_EQ(slow.frames.count(), atRemoval);
    EXPECT_EQ(once.frames.count(), 1);
    EXPECT_EQ(still.frames.count(), 0);
    EXPECT_FALSE(sdkRemoveStreamingCallback(handle, ownId));
    EXPECT_FALSE(sdkRemoveStreamingCallback(handle, stillId)) << "it is registered for stills";
    EXPECT_EQ(sdkAddStillCallback(handle, nullptr, nullptr), -1);
}

TEST_F(SoftwareCapture, FlipsMoveThePictureAndAWideSampleKeepsTheDevicesByteOrder) {
    open(smallDevice(ColorFormat::RGGB, 12, true));
    const std::uint8_t source[] = {0, 1, 0, 2, 0, 3, 1, 4};
    std::uint8_t flipped[8]{};
    const ORVEX_IMAGE_FORMAT format{sizeof format, 2, 2, 1, 8, {}};
    const ORVEX_CONVERSION_PARAMS parameters{sizeof parameters, 0, 0, 1, 1, 0, 1, 0, 1, 0, 0};
    ASSERT_TRUE(sdkConvertToMono16Ex(handle, flipped, source, &format, &parameters));
    EXPECT_EQ(Bytes(flipped, flipped + 8), (Bytes{1, 4, 0, 3, 0, 2, 0, 1}));
    EXPECT_FALSE(sdkConvertToMono8Ex(handle, flipped, source, &format, &parameters)) << "a 16-bit source";
}

TEST_F(SoftwareCapture, FramesAreLostAndCutAsPlanned) {
    open(smallDevice(ColorFormat::MONO));
    truncateFrames(kSerial, 1, 100);
    dropFrames(kSerial, 3);
    Bytes frame(24 * 16);
    ASSERT_TRUE(sdkStreamVideoControl(handle, 1, 0) && sdkCaptureVideoFrames(handle, 1, frame.data()));
    ORVEX_IMAGE_FORMAT image{};
    EXPECT_TRUE(sdkGetVideoImageFormat(handle, &image));
    EXPECT_EQ(image.imageSize, 100u);
    _ORVEX_STREAM_STATS statistics{};
    ASSERT_TRUE(sdkGetStreamStats(handle, 1, &statistics, sizeof statistics));
    EXPECT_EQ(Bytes(statistics.counters, statistics.counters + 7), (Bytes{1, 3, 3, 0, 0, 0, 1}));
}

} // namespace
