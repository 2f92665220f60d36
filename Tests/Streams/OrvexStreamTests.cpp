// SPDX-License-Identifier: Apache-2.0

#include "Streams/OrvexStream.h"

#include <algorithm>
#include <future>
#include <mutex>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/KestrelExceptions.h"
#include "Streams/StreamSettings.h"
#include "Support/Event.h"
#include "Support/OrvexApiChange.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using namespace OrvexAdapter;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::expectFailure;

class OrvexStreamTest : public TestSupport::SoftwareDeviceFixture {
protected:
    static DeviceDescription color() { return SoftwareDevices::defaultDevices()[0]; }
    static DeviceDescription mono() { return SoftwareDevices::defaultDevices()[1]; }
    /// Opens a camera with small frames that are delivered as soon as they are captured.
    static Camera& openFast(const DeviceDescription& description) {
        Camera& camera = open(description);
        SoftwareDevices::setAsFastAsAsked(description.serial, true);
        setRegion(camera, 64, 48);
        return camera;
    }
};

/// Every default device in each mode.
class StreamLifeCycle : public OrvexStreamTest, public ::testing::WithParamInterface<std::tuple<int, const char*>> {
protected:
    static DeviceDescription description() {
        return SoftwareDevices::defaultDevices()[static_cast<std::size_t>(std::get<0>(GetParam()))];
    }
    Camera& openInMode() {
        Camera& camera = openFast(description());
        set(camera, "Streaming Mode", std::get<1>(GetParam()));
        return camera;
    }
};

INSTANTIATE_TEST_SUITE_P(EveryDevice, StreamLifeCycle,
                         ::testing::Combine(::testing::Values(0, 1, 2), ::testing::Values("Video", "Still")));

TEST_P(StreamLifeCycle, DeliversAnyNumberOfFramesAndStops) {
    Camera& camera = openInMode();
    for (const int frames : {1, 2, 3, 5, 8, 89}) {
        camera.startStream();
        camera.startStream();
        EXPECT_TRUE(camera.isStreaming());
        for (int frame = 0; frame < frames; ++frame) {
            const auto image = camera.getImage();
            ASSERT_EQ(image->getWidth(), 64U);
            ASSERT_EQ(image->getHeight(), 48U);
        }
        camera.stopStream();
        camera.stopStream();
        EXPECT_FALSE(camera.isStreaming());
        EXPECT_FALSE(SoftwareDevices::isStreaming(description().serial));
    }
    EXPECT_GT(camera.getStreamStatistics().getCaptureTime(), 0.0);
    camera.getImage();
    EXPECT_FALSE(camera.isStreaming()) << "a run for one image ends with it";
    camera.startStream();
    camera.suspend();
    EXPECT_FALSE(camera.isStreaming());
    camera.startStream(); // uses the handle that the next connection replaces
    camera.connect();
    EXPECT_FALSE(camera.isStreaming());
    EXPECT_EQ(camera.getImage()->getWidth(), 64U) << "the region is kept";
}

TEST_P(StreamLifeCycle, AWaitWithoutAFrameThrowsTheReason) {
    Camera& camera = openInMode();
    const std::uint32_t serial = description().serial;
    const Operation capture = std::string(std::get<1>(GetParam())) == "Video" ? Operation::sdkCaptureVideoFrames
                                                                              : Operation::sdkCaptureStillFrame;
    const auto waitFor = [&](const std::function<void()>& end, const std::string& word, const std::string& sentence) {
        SoftwareDevices::clearFaults();
        SoftwareDevices::failNext(serial, capture, 1'000'000'000, SoftwareDevices::kTimedOut);
        camera.startStream();
        // The waiter has found the stream running when it reads the colour format.
        const std::uint64_t reads = SoftwareDevices::calls(Operation::sdkGetProperty);
        auto waiter = std::async(std::launch::async, [&] {
            expectFailure<KestrelException_Stream>([&] { camera.getImage(); }, word, sentence);
        });
        while (SoftwareDevices::calls(Operation::sdkGetProperty) == reads) {
            std::this_thread::yield();
        }
        end();
        EXPECT_EQ(waiter.wait_for(TestSupport::kLongEnough), std::future_status::ready);
        waiter.get();
        camera.stopStream();
    };
    waitFor([&] { camera.stopStream(); }, "StreamStopped", "The stream does not run, or was stopped.");
    waitFor([&] { SoftwareDevices::failNext(serial, capture, 1'000'000'000, SoftwareDevices::kCaptureEnded); },
            "StreamStopped", "The camera's capture ended before a frame arrived.");
    set(camera, "Timeout", "20");
    waitFor([] {}, "StreamTimeout", "No frame arrived in time.");
    SoftwareDevices::clearFaults();
    set(camera, "Timeout", "-1");
    EXPECT_EQ(camera.getImage()->getWidth(), 64U) << "the next run succeeds";
}

TEST_F(OrvexStreamTest, RefusalsOfTheDeviceAreNamed) {
    struct Case {
        const char* mode;
        Operation operation;
        std::uint32_t error;
        const char* word;
        const char* sentence;
    };
    const std::vector<Case> cases{
        {"Video", Operation::sdkAddStreamingCallback, 1, "RegisterStreamCallback",
         "Unable to register streaming callback."},
        {"Video", Operation::sdkSetFormat, 1, "StartStream",
         "An error with the video stream occured. Unable to start stream."},
        {"Video", Operation::sdkStreamVideoControl, 1, "StartStream",
         "An error with the video stream occured. Unable to start stream."},
        {"Still", Operation::sdkAddStillCallback, 1, "RegisterStreamCallback",
         "Unable to register streaming callback."},
        {"Still", Operation::sdkEnableStillMode, 9, "InvalidStreamFormat", "Stream format is invalid."},
        {"Still", Operation::sdkEnableStillMode, 8, "StartStream",
         "An error with the still stream occured. Unable to start stream."},
    };
    Camera& camera = open(mono());
    for (const Case& row : cases) {
        set(camera, "Streaming Mode", row.mode);
        SoftwareDevices::failNext(mono().serial, row.operation, 1, row.error);
        EXPECT_EQ(TestSupport::thrownBy([&] { camera.startStream(); }),
                  row.word + std::string("[Shared/src/Streams/OrvexStream.cpp]") + row.sentence);
        EXPECT_FALSE(camera.isStreaming());
    }
}

TEST_F(OrvexStreamTest, SettingsThatNoFrameShowsComeFromTheProperties) {
    Camera& camera = open(color());
    set(camera, "Strobe", "Enabled");
    set(camera, "Strobe From Start Exposure", "Enabled");
    const ORVEX_SNAPSHOT settings = buildStreamSettings(camera, QUILL_HERE);
    EXPECT_EQ(settings.strobeFlags, 0xA0000000U);
    EXPECT_EQ(settings.timeout, -1.0F);
    const ORVEX_SNAPSHOT grey = buildStreamSettings(open(mono()), QUILL_HERE);
    EXPECT_EQ(std::tuple(grey.gainRed, grey.gainBlue, grey.gainGreen1, grey.gainGreen2),
              std::tuple(1.0F, 1.0F, 1.0F, 1.0F));
    Camera& bare = open(SoftwareDevices::bareDevice());
    EXPECT_EQ(TestSupport::thrownBy([&] { bare.startStream(); }),
              "InvalidStreamSettings[Shared/src/Streams/OrvexStream.cpp]Stream settings are invalid.");
}

TEST_F(OrvexStreamTest, AnIncompleteFrameIsCountedAndNeverBecomesAnImage) {
    DeviceDescription description = color();
    description.noise = 0;
    Camera& camera = openFast(description);
    SoftwareDevices::presentScene(description.serial, {1, 1, {250, 200, 150}});
    setRegion(camera, 8, 2);
    const StreamStatistics& statistics = camera.getStreamStatistics();
    for (const char* mode : {"Video", "Still"}) {
        set(camera, "Streaming Mode", mode);
        for (const char* pixelFormat : {"8", "16", "24", "32", "48"}) {
            set(camera, "Pixel Format", pixelFormat);
            const std::vector<unsigned char> whole = camera.getImage()->getData();
            for (std::uint32_t bytes = 0; bytes < whole.size(); ++bytes) {
                const unsigned long long before = statistics.getIncompleteFrameCount();
                SoftwareDevices::truncateFrames(description.serial, 2, bytes);
                ASSERT_EQ(camera.getImage()->getData(), whole) << mode << " " << pixelFormat << ", " << bytes;
                ASSERT_EQ(statistics.getIncompleteFrameCount(), before + 2) << bytes;
            }
        }
    }
    setRegion(camera, 512, 512); // large enough to be pooled
    SoftwareDevices::truncateFrames(description.serial, 1'000'000'000, 512);
    set(camera, "Timeout", "20");
    expectFailure<KestrelException_Stream>([&] { camera.getImage(); }, "StreamTimeout", "No frame arrived in time.");
}

TEST_F(OrvexStreamTest, AWaitIsAsLongAsTheTimeoutSaysAndTheFrameTakes) {
    DeviceDescription slow = color();
    slow.frameRates = {0.15F};
    Camera& camera = open(slow);
    setRegion(camera, 64, 48);
    set(camera, "Still Exposure", "50");
    set(camera, "Streaming Mode", "Still");
    for (const char* timeout : {"-0.5", "1e13"}) {
        set(camera, "Timeout", timeout);
        EXPECT_EQ(camera.getImage()->getWidth(), 64U) << timeout;
    }
    ORVEX_SNAPSHOT settings = buildStreamSettings(camera, QUILL_HERE);
    settings.timeout = 0.9F;
    EXPECT_EQ(
        CaptureRun(StreamMode::Still, nullptr, settings, std::make_shared<FrameHub>()->makeRun(), {}, {}).timeout(),
        toWaitingTime(0.9F));
    EXPECT_GT(toWaitingTime(0.9F), std::chrono::microseconds(899));
    EXPECT_GT(toWaitingTime(1e30), std::chrono::hours(24 * 365));
    set(camera, "Still Exposure Delay", "900");
    EXPECT_EQ(getFrameTime(camera, StreamMode::Still), std::chrono::milliseconds(950));
    EXPECT_GT(getFrameTime(camera, StreamMode::Video), std::chrono::milliseconds(6666 + 10));
}

TEST_F(OrvexStreamTest, AFrameThatNoMemoryHoldsIsRefusedBeforeTheDeviceIsAsked) {
    DeviceDescription vast = color();
    vast.sensorWidth = vast.sensorHeight = 0x80000000;
    Camera& camera = open(vast);
    const std::uint64_t calls = SoftwareDevices::calls(Operation::sdkAddStreamingCallback);
    for (const char* pixelFormat : {"16", "32"}) { // 2^63 bytes, and 2^64
        set(camera, "Pixel Format", pixelFormat);
        expectFailure<KestrelException_Stream>([&] { camera.startStream(); }, "StartStream",
                                               "There is not enough memory for a frame.");
    }
    EXPECT_EQ(SoftwareDevices::calls(Operation::sdkAddStreamingCallback), calls);
}

TEST_F(OrvexStreamTest, SeveralThreadsMayWaitForFrames) {
    Camera& camera = openFast(mono());
    OrvexStream stream(dynamic_cast<OrvexCamera&>(camera));
    stream.startStream();
    std::vector<std::future<void>> waiters;
    for (int thread = 0; thread < 3; ++thread) {
        waiters.push_back(std::async(std::launch::async, [&] {
            for (int frame = 0; frame < 50; ++frame) {
                EXPECT_EQ(stream.getImageData().size(), 64U * 48U);
            }
        }));
    }
    for (auto& waiter : waiters) {
        EXPECT_NO_THROW(waiter.get());
    }
    EXPECT_EQ(stream.getStreamStatistics().getFrameCount(STREAM_TYPE::Delivered), 150U);
}

TEST_F(OrvexStreamTest, CountsWhatTheCameraDeliversAndWhatIsHandedOut) {
    Camera& camera = openFast(mono());
    StreamStatistics& statistics = camera.getStreamStatistics();
    statistics.setDesiredIntervalTime(STREAM_TYPE::Delivered, 1000);
    statistics.setDesiredIntervalTime(STREAM_TYPE::Received, 1000);
    camera.startStream();
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::kLongEnough;
    do { // the device calls back on a thread of its own
        camera.getImage();
    } while (statistics.getFrameCount(STREAM_TYPE::Received) == 0 && std::chrono::steady_clock::now() < deadline);
    camera.stopStream();
    EXPECT_GT(statistics.getFramesPerSecond(STREAM_TYPE::Delivered), 0);
    EXPECT_GT(statistics.getFramesPerSecond(STREAM_TYPE::Received), 0);
    EXPECT_EQ(statistics.getFramesPerSecond(STREAM_TYPE::Reserved), 0);
}

/// Records the buffers passed to the device.
class BufferSpy {
public:
    BufferSpy() { s_Buffers.clear(); }

    static std::set<const unsigned char*> buffers() {
        const std::lock_guard lock(s_Mutex);
        return s_Buffers;
    }

private:
    static std::uint32_t capture(void* handle, std::uint32_t count, std::uint8_t* buffer) {
        {
            const std::lock_guard lock(s_Mutex);
            s_Buffers.insert(buffer);
        }
        return TestSupport::OrvexApiChange::original().sdkCaptureVideoFrames(handle, count, buffer);
    }

    static inline std::mutex s_Mutex; // guards the buffers
    static inline std::set<const unsigned char*> s_Buffers;
    TestSupport::OrvexApiChange m_Change{[](OrvexApi& api) { api.sdkCaptureVideoFrames = capture; }};
};

TEST_F(OrvexStreamTest, FramesAreMovedToTheCallerInAHandfulOfBuffers) {
    const BufferSpy spy;
    Camera& camera = openFast(mono());
    setRegion(camera, 320, 240); // large enough to be pooled
    camera.startStream();
    constexpr std::size_t kInFlight = 4; // one for the capture, one handed over, one held, one spare
    for (int frame = 0; frame < 50; ++frame) {
        const auto image = camera.getImage();
        ASSERT_EQ(BufferSpy::buffers().count(image->getDataAddress()), 1U) << "the device wrote into this buffer";
    }
    EXPECT_LE(BufferSpy::buffers().size(), kInFlight);
}

} // namespace
