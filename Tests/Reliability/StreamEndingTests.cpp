// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/Event.h"
#include "Support/NoThreads.h"
#include "Support/OrvexApiChange.h"
#include "Support/ProcessFigures.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using KestrelExceptions::KestrelException_Stream;
using OrvexAdapter::OrvexApi;
using SoftwareDevices::Operation;
using TestSupport::eventually;
using TestSupport::expectFailure;
using TestSupport::NoThreads;
using TestSupport::OrvexApiChange;

constexpr std::uint32_t kStubbornDevice = 7;
constexpr int kEveryTime = 1'000'000'000;

struct EndingMode {
    const char* name;
    Operation remove;
};

constexpr EndingMode kEndingModes[] = {{"Video", Operation::sdkRemoveStreamingCallback},
                                       {"Still", Operation::sdkRemoveStillCallback}};

void failEveryTime(Operation operation) {
    SoftwareDevices::failNext(kStubbornDevice, operation, kEveryTime, SoftwareDevices::kInternalError);
}

class StreamEnding : public TestSupport::SoftwareDeviceFixture {
protected:
    /// Connects a new device.
    static Camera& openIn(const char* mode) {
        s_FailingStops = 0;
        SoftwareDevices::startEmpty();
        Camera::unitialisedWorkpace();
        SoftwareDevices::DeviceDescription description = SoftwareDevices::defaultDevices()[1];
        description.serial = kStubbornDevice;
        description.sensorWidth = 64;
        description.sensorHeight = 48;
        Camera& camera = open(description);
        SoftwareDevices::setAsFastAsAsked(kStubbornDevice, true);
        set(camera, "Streaming Mode", mode);
        return camera;
    }

    inline static std::atomic<int> s_FailingStops{0};        ///< the number of stops that still fail
    inline static ORVEX_FRAME_CALLBACK s_Callback = nullptr; ///< the last one registered
    inline static void* s_Context = nullptr;

private:
    static bool stopFails() { return s_FailingStops > 0 && s_FailingStops-- > 0; }
    static void changeApi(OrvexApi& api) {
        api.sdkStreamVideoControl = [](void* handle, std::uint32_t command, std::uint32_t zero) {
            const bool fails = command == 0 && stopFails();
            return fails ? 0 : OrvexApiChange::original().sdkStreamVideoControl(handle, command, zero);
        };
        api.sdkDisableStillMode = [](void* handle) {
            return stopFails() ? 0 : OrvexApiChange::original().sdkDisableStillMode(handle);
        };
        api.sdkAddStreamingCallback = [](void* handle, ORVEX_FRAME_CALLBACK callback, void* context) {
            s_Callback = callback;
            s_Context = context;
            return OrvexApiChange::original().sdkAddStreamingCallback(handle, callback, context);
        };
    }

    OrvexApiChange m_Change{changeApi};
};

TEST_F(StreamEnding, AFailedStopAroundAnImageStaysVisibleAndCanBeTriedAgain) {
    for (const EndingMode& mode : kEndingModes) {
        Camera& camera = openIn(mode.name);
        s_FailingStops = 1;
        expectFailure<KestrelException_Stream>([&] { camera.getImage(); }, "StopStream", "Unable to stop stream.");
        EXPECT_TRUE(camera.isStreaming() && SoftwareDevices::isStreaming(kStubbornDevice));
        camera.stopStream();
        EXPECT_FALSE(camera.isStreaming() || SoftwareDevices::isStreaming(kStubbornDevice));
        EXPECT_EQ(camera.getImage()->getWidth(), 64U);
    }
}

TEST_F(StreamEnding, WithoutAThreadTheDeviceIsStoppedAndTheNextStartClearsWhatIsLeft) {
    if (!TestSupport::NoThreads::isPossible) {
        GTEST_SKIP() << "The system cannot be kept from starting threads.";
    }
    for (const EndingMode& mode : kEndingModes) {
        Camera& camera = openIn(mode.name);
        camera.getImage(); // starts the device's own thread
        for (const bool stopFails : {false, true}) {
            s_FailingStops = stopFails ? 1 : 0;
            {
                const NoThreads noThreads;
                expectFailure<KestrelException_Stream>([&] { camera.startStream(); }, "StartStream",
                                                       "Unable to start stream.");
            }
            EXPECT_FALSE(camera.isStreaming());
            EXPECT_EQ(SoftwareDevices::isStreaming(kStubbornDevice), stopFails);
            EXPECT_EQ(camera.getImage()->getWidth(), 64U);
            EXPECT_FALSE(SoftwareDevices::isStreaming(kStubbornDevice));
        }
    }
}

TEST_F(StreamEnding, EveryStepIsTriedAndTheSdkMayCallWhatItKeeps) {
    for (const EndingMode& mode : kEndingModes) {
        openIn(mode.name).startStream();
        s_FailingStops = kEveryTime;
        failEveryTime(mode.remove);
        failEveryTime(Operation::sdkCameraClose);
        const std::uint64_t removals = SoftwareDevices::calls(mode.remove);
        Camera::unitialisedWorkpace();
        EXPECT_GT(SoftwareDevices::calls(mode.remove), removals);
        EXPECT_TRUE(SoftwareDevices::isStreaming(kStubbornDevice));
    }
    s_Callback(s_Context, 0, 0);
}

TEST_F(StreamEnding, IsBoundedWhenTheDeviceKeepsACapture) {
    std::thread([] {}).join(); // a sanitizer adds a thread of its own to the first one
    const std::size_t threads = TestSupport::threadsOfProcess();
    Camera& camera = openIn("Still");
    set(camera, "Hardware Trigger", "Enabled");
    set(camera, "Timeout", "60000");
    SoftwareDevices::startLog();
    const std::uint64_t captures = SoftwareDevices::calls(Operation::sdkCaptureStillFrame);
    camera.startStream();
    EXPECT_TRUE(eventually([&] { return SoftwareDevices::calls(Operation::sdkCaptureStillFrame) > captures; }));
    s_FailingStops = kEveryTime;
    failEveryTime(Operation::sdkCancelStillCapture);
    failEveryTime(Operation::sdkCameraClose);
    Camera::unitialisedWorkpace();
    for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
        EXPECT_NE(call.operation, Operation::sdkCaptureStillFrame) << "the library waited for the capture to end";
    }
    SoftwareDevices::startEmpty();
    EXPECT_TRUE(eventually([&] { return TestSupport::threadsOfProcess() <= threads; })) << "the worker ends by itself";
}

} // namespace
