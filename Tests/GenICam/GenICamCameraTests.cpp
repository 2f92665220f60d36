// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Quill.h>

#include "GenICam/GenICamTest.h"
#include "GigEPattern.h"
#include "Support/Event.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using namespace TestSupport;

using Seconds = std::chrono::duration<double>;

double secondsOf(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return Seconds(std::chrono::steady_clock::now() - begin).count();
}

std::string value(Camera& camera, const std::string& name) {
    return camera.getProperty(name).getValue();
}

TEST_F(GenICamTest, IsFoundOnCardsAndAddressesAndOnlyThere) {
    const CameraProcess one(peer("127.0.0.2", "One"));
    const CameraProcess two(peer("127.0.0.3", "Two"));
    lookOn({"lo"});
    listed("Aravis-One");
    listed("Aravis-Two");
    Camera::unitialisedWorkpace();
    double seconds = secondsOf([] { Camera::initialiseWorkspace(); });
    EXPECT_EQ(Camera::getCamerasList().count("Aravis-One"), 1U);
    EXPECT_LT(seconds, 5) << "the figure of a machine at rest is 0.2 s";
    RecordProperty("SecondsToFind", std::to_string(seconds));
    Camera::unitialisedWorkpace();

    lookOn({}, {"127.0.0.3"});
    listed("Aravis-Two");
    EXPECT_EQ(Camera::getCamerasList().count("Aravis-One"), 0U) << "nobody named its address";
    EXPECT_EQ(Camera::getCamera("Aravis-Two").getKind(), CameraKind::GenICam);
    Camera::unitialisedWorkpace();

    lookOn({"nosuchcard"}, {"127.0.0.9"});
    Camera::searchForNewCameras();
    EXPECT_EQ(Camera::getCamerasList().count("Aravis-Two"), 0U);
    for (const char* wrong : {"", "a/b", "much_too_long_for_a_card"}) {
        EXPECT_THROW(lookOn({wrong}), KestrelException_InvalidArgument) << wrong;
    }
    EXPECT_THROW(lookOn({}, {"127.0.0"}), KestrelException_InvalidArgument);
}

TEST_F(GenICamTest, HasItsFeaturesAndTheStandardVocabulary) {
    const CameraProcess process(peer("127.0.0.2", "One"));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Aravis-One");
    EXPECT_EQ(camera.getModelName(), "Fake");
    const std::map<std::string, std::string> expected{{"Width", "512"},
                                                      {"Height", "512"},
                                                      {"X Offset", "0"},
                                                      {"Maximum Width", "2048"},
                                                      {"Unit Width", "1"},
                                                      {"PixelFormat", "Mono8"},
                                                      {"Pixel Format", "Mono8"},
                                                      {"Color Format", "MONO"},
                                                      {"Exposure", "10"},
                                                      {"ExposureTimeAbs", "10000"},
                                                      {"Vendor Name", "Aravis"},
                                                      {"Serial Number", "One"},
                                                      {"Endianness", "Little Endian"},
                                                      {"Hardware Interface", "GigE Vision"},
                                                      {"Trigger Mode", "Off"}};
    for (const auto& [name, text] : expected) {
        EXPECT_EQ(value(camera, name), text) << name;
    }

    std::vector<std::string> changed;
    camera.registerPropertyChangeCallback([&](Property& property) { changed.push_back(property.getName()); });
    camera.getProperty("Exposure").setValue("2.5");
    EXPECT_EQ(value(camera, "ExposureTimeAbs"), "2500");
    EXPECT_THAT(changed, ::testing::IsSupersetOf({"Exposure", "ExposureTimeAbs"}));
    camera.getProperty("Width").setValue("100000");
    EXPECT_EQ(value(camera, "Width"), "2048") << "limited to the range";
    EXPECT_THROW(camera.getProperty("Width").setValue("wide"), std::invalid_argument);
    EXPECT_THROW(camera.getProperty("PixelFormat").setValue("Mono9"), KestrelException);
    EXPECT_FALSE(camera.getProperty("DeviceID").isAvailableForWriting());
    EXPECT_THAT(camera.getSupportedFunctions(), ::testing::Contains("TriggerSoftware"));
    camera.disconnect();
    EXPECT_THROW(value(camera, "Width"), KestrelException_Property);
    camera.connect();
    EXPECT_EQ(value(camera, "Width"), "2048");
}

TEST_F(GenICamTest, EveryFrameIsAccountedFor) {
    const CameraProcess process(peer("127.0.0.2", "One"));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Aravis-One");
    const auto image = camera.getImage();
    EXPECT_EQ(image->getWidth(), 512U);
    EXPECT_FALSE(camera.isStreaming());

    for (int run = 2; run <= 3; ++run) {
        FrameQueue queue = camera.openFrameQueue({64, WhenFull::DropNewest, "test"});
        camera.startStream();
        std::uint64_t last = 0;
        std::optional<std::uint64_t> lastOfCamera;
        for (int i = 0; i < 30; ++i) {
            const FrameResult result = queue.pop(kLongEnough);
            ASSERT_TRUE(result);
            const FrameInformation& known = result.frame.information;
            EXPECT_EQ(known.run, static_cast<std::uint64_t>(run));
            EXPECT_GT(known.number, last);
            if (lastOfCamera) {
                EXPECT_EQ(*known.cameraNumber - *lastOfCamera, known.number - last) << "a gap of the camera's numbers";
            }
            EXPECT_EQ(known.cameraClock, CameraClock::Camera);
            EXPECT_EQ(known.exposureMs, 10.0);
            last = known.number;
            lastOfCamera = known.cameraNumber;
        }
        camera.stopStream();
        while (queue.tryPop()) {
        }
        const auto counters = camera.getStreamCounters();
        expectEveryFrameCounted(counters);
    }
}

TEST_F(GenICamTest, LeavesAndComesBack) {
    const char* const wanted = std::getenv("QUILL_TEST_REPLUGS");
    const int replugs = wanted == nullptr ? 3 : std::atoi(wanted);
    CameraProcess process(peer("127.0.0.2", "One"));
    lookOn({}, {"127.0.0.2"});
    listed("Aravis-One");
    TestSupport::Event left;
    TestSupport::Event came;
    Camera::registerDisconnectCallback([&](const std::string& model, const std::string& serialNumber) {
        EXPECT_EQ(model + serialNumber, "FakeAravis-One");
        left.raise();
    });
    Camera::registerNewConnectCallback([&] { came.raise(); });
    Camera::initialiseWorkspace();
    double longestNotice = 0;
    double longestCall = 0;
    for (int i = 1; i <= replugs; ++i) {
        Camera& camera = connected("Aravis-One");
        FrameQueue queue = camera.openFrameQueue({});
        camera.startStream();
        ASSERT_TRUE(queue.pop(kLongEnough));
        process.pull();
        const double notice = secondsOf([&] {
            longestCall = std::max(longestCall, secondsOf([&] { EXPECT_ANY_THROW(value(camera, "Width")); }));
            ASSERT_TRUE(left.wait(i));
        });
        longestNotice = std::max(longestNotice, notice);
        while (queue.pop(kLongEnough)) {
        }
        EXPECT_EQ(queue.pop().status, FrameQueueStatus::CameraGone);
        longestCall =
            std::max(longestCall, secondsOf([&] { EXPECT_THROW(camera.connect(), KestrelException_Camera); }));
        process.putBack();
        ASSERT_TRUE(came.wait(i));
    }
    RecordProperty("SecondsToNotice", std::to_string(longestNotice));
    RecordProperty("LongestCall", std::to_string(longestCall));
    EXPECT_LT(longestCall, 30) << "the figure of a machine at rest is 0.5 s";
}

TEST_F(GenICamTest, IsFreeForItsNextObjectAfterAnOutage) {
    const CameraProcess process(software("127.0.0.2", {}));
    lookOn({}, {"127.0.0.2"}, 2 * std::chrono::milliseconds(kLongEnough).count());
    listed("Quill-One");
    TestSupport::Event left;
    TestSupport::Event came;
    Camera::registerDisconnectCallback([&](const std::string&, const std::string&) { left.raise(); });
    Camera::registerNewConnectCallback([&] { came.raise(); });
    Camera::initialiseWorkspace();
    Camera& camera = connected("Quill-One");
    camera.suspend();
    camera.connect();
    process.tell("silent on");
    ASSERT_TRUE(left.wait());
    EXPECT_THROW(camera.connect(), KestrelException_Camera);
    process.tell("silent off");
    ASSERT_TRUE(came.wait());
    connected("Quill-One"); // once the lost one has said good-bye
}

TEST_F(GenICamTest, AnotherProgramsCameraIsListedAndRefused) {
    const CameraProcess process(software("127.0.0.2", {"--deny"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = listed("Quill-One");
    const auto refusal = TestSupport::expectThrown<KestrelException_Camera>([&] { camera.connect(); });
    EXPECT_STREQ(refusal.who(), "CameraConnection");
    EXPECT_THAT(refusal.why(), ::testing::HasSubstr("Another program controls it"));
    process.tell("deny off");
    connected("Quill-One"); // once the camera has read the line
    EXPECT_TRUE(camera.getImage());
}

TEST_F(GenICamTest, WritesEveryKindOfNumber) {
    const CameraProcess process(software("127.0.0.2", {"--size", "640x480"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Quill-One");
    const std::vector<std::array<std::string, 3>> cases{{"Exposure", "12.5", "12.5"},
                                                        {"ExposureTime", "0", "10"},
                                                        {"Gain", "1e9", ""},
                                                        {"Width", "322", "324"},
                                                        {"Height", "1", "16"},
                                                        {"Red Gain", "2", "2"},
                                                        {"Auto Exposure", "Enabled", "Enabled"},
                                                        {"Flipping", "X", "X"},
                                                        {"DeviceUserID", "line 4", "line 4"}};
    for (const auto& [name, text, expected] : cases) {
        Property& property = camera.getProperty(name);
        property.setValue(text);
        EXPECT_EQ(property.getValue(), expected.empty() ? property.getMaximum() : expected) << name;
    }
    EXPECT_EQ(value(camera, "GainSelector"), "All") << "a colour's gain leaves the selection as it was";
    EXPECT_FALSE(camera.getProperty("ExposureTime").isAvailableForWriting()) << "while it is automatic";
}

/// Streams until a number of frames came or were lost, and returns the counters.
std::vector<StreamCounter> countersOfARun(Camera& camera, std::uint64_t frames) {
    FrameQueue queue = camera.openFrameQueue({4, WhenFull::DropOldest, "test"});
    camera.startStream();
    EXPECT_TRUE(eventually([&] {
        queue.tryPop();
        return counter(camera.getStreamCounters(), "Captured") >= frames;
    }));
    camera.stopStream();
    return camera.getStreamCounters();
}

TEST_F(GenICamTest, SaysWhyAFrameIsLost) {
    struct Case {
        std::vector<std::string> faults;
        const char* loss; ///< null if no frame is
    };
    for (const Case& fault : std::vector<Case>{{{"--loss", "1"}, nullptr},
                                               {{"--reorder", "5", "--duplicate", "5"}, nullptr},
                                               {{"--loss", "2", "--no-resend"}, "Timed Out"},
                                               {{"--short-frames"}, "Size Mismatch"},
                                               {{"--lie", "width"}, "Size Mismatch"},
                                               {{"--gvcp-loss", "1"}, nullptr},
                                               {{"--id-start", "65530"}, nullptr}}) {
        SCOPED_TRACE(fault.faults.front() + " " + fault.faults.back());
        std::vector<std::string> options{"--size", "640x480", "--fps", "50"};
        options.insert(options.end(), fault.faults.begin(), fault.faults.end());
        const CameraProcess process(software("127.0.0.2", options));
        lookOn({}, {"127.0.0.2"});
        Camera& camera = connected("Quill-One");
        const auto counters = countersOfARun(camera, 20);
        expectEveryFrameCounted(counters);
        if (fault.loss != nullptr) {
            EXPECT_GT(counter(counters, fault.loss), 10U);
        } else {
            EXPECT_GT(counter(counters, "Delivered"), 10U);
        }
        Camera::unitialisedWorkpace();
    }
}

/// Compares each sample of an image with the formula by which the camera made it.
void expectPattern(const Imaging::Image& image, const GenICamDevices::PixelFormat& format, std::uint32_t frame) {
    using GenICamDevices::SampleColor;
    GenICamDevices::Picture picture;
    picture.sensorWidth = image.getWidth();
    const std::size_t samples = image.getBytesPerPixel() / image.getBytesPerChannel();
    const unsigned char* bytes = image.getDataAddress();
    for (unsigned row = 0; row < image.getHeight(); ++row) {
        for (unsigned column = 0; column < image.getWidth(); ++column) {
            for (std::size_t i = 0; i < samples; ++i) {
                const std::map<GenICamDevices::PixelKind, SampleColor> colors{
                    {GenICamDevices::PixelKind::Mono, SampleColor::Grey},
                    {GenICamDevices::PixelKind::BayerRG, GenICamDevices::mosaicColorAt(column, row)},
                    {GenICamDevices::PixelKind::Rgb, static_cast<SampleColor>(i + 1)},
                    {GenICamDevices::PixelKind::Bgr, static_cast<SampleColor>(3 - i)}};
                const unsigned sample = image.getBytesPerChannel() == 1 ? bytes[0] : bytes[0] + 256U * bytes[1];
                ASSERT_EQ(sample, sampleAt(picture, format, frame, column, row, colors.at(format.kind)))
                    << "row " << row << ", column " << column << ", sample " << i;
                bytes += image.getBytesPerChannel();
            }
        }
    }
}

TEST_F(GenICamTest, EveryPixelFormatArrivesAsItWasSent) {
    const CameraProcess process(software("127.0.0.2", {"--size", "64x32", "--fps", "100"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Quill-One");
    for (const GenICamDevices::PixelFormat& format : GenICamDevices::kPixelFormats) {
        if (format.kind == GenICamDevices::PixelKind::Yuv422) {
            continue; // is converted, to RGB
        }
        SCOPED_TRACE(format.name);
        camera.getProperty("PixelFormat").setValue(format.name);
        FrameQueue queue = camera.openFrameQueue({});
        camera.startStream();
        const FrameResult result = queue.pop(kLongEnough);
        camera.stopStream();
        ASSERT_TRUE(result);
        EXPECT_EQ(result.frame.image->getBitDepth(), format.sampleBits);
        expectPattern(*result.frame.image, format, static_cast<std::uint32_t>(*result.frame.information.cameraNumber));
    }
}

TEST_F(GenICamTest, AQueueThatHoldsTheStreamBackLosesNothingSilently) {
    const CameraProcess process(software("127.0.0.2", {"--size", "64x32", "--fps", "1000"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Quill-One");
    FrameQueue queue = camera.openFrameQueue({1, WhenFull::HoldBack, "test"});
    camera.startStream();
    ASSERT_TRUE(queue.pop(kLongEnough));
    const auto received = [&] { return camera.getStreamStatistics().getFrameCount(STREAM_TYPE::Received); };
    const auto before = received();
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // more frames than there are buffers
    EXPECT_LE(received(), before + 3) << "the worker is held back";
    EXPECT_TRUE(eventually([&] { // frames for which there was no buffer show as a gap, at the latest
        queue.tryPop();
        return counter(camera.getStreamCounters(), "Missed") > 0;
    }));
    camera.stopStream();
    const auto counters = camera.getStreamCounters();
    expectEveryFrameCounted(counters);
}

TEST_F(GenICamTest, CamerasAreOpenedAndReadByThreadsOfTheirOwn) {
    const CameraProcess one(peer("127.0.0.2", "One"));
    const CameraProcess two(peer("127.0.0.3", "Two"));
    lookOn({}, {"127.0.0.2", "127.0.0.3"});
    std::vector<std::thread> threads;
    for (const char* name : {"Aravis-One", "Aravis-Two"}) {
        threads.emplace_back([name] {
            for (int i = 0; i < 5; ++i) {
                Camera& camera = connected(name);
                EXPECT_NO_THROW(EXPECT_EQ(camera.getImage()->getWidth(), 512U));
                EXPECT_NO_THROW(camera.disconnect());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(GenICamTest, TheProcessMayEndWhileItStreams) {
    const CameraProcess process(peer("127.0.0.2", "One"));
    EXPECT_EXIT(
        {
            lookOn({}, {"127.0.0.2"});
            Camera& camera = listed("Aravis-One");
            Camera::initialiseWorkspace();
            camera.connect();
            FrameQueue queue = camera.openFrameQueue({});
            camera.startStream();
            std::exit(queue.pop(kLongEnough) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "^$");
}

} // namespace
