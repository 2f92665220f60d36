// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameQueue.h"

#include <array>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using SoftwareDevices::Operation;
using TestSupport::expectFailure;
using TestSupport::kLongEnough;
using Status = FrameQueueStatus;

constexpr std::uint32_t kEndlessly = 1'000'000'000;

std::map<std::string, std::uint64_t> valuesOf(const std::vector<StreamCounter>& counters) {
    std::map<std::string, std::uint64_t> values;
    for (const StreamCounter& counter : counters) {
        EXPECT_FALSE(counter.description.empty());
        values[counter.name] = counter.value;
    }
    return values;
}

/// The sum of the counters that are part of "Captured".
std::uint64_t sumOf(std::map<std::string, std::uint64_t> values) {
    std::uint64_t sum = 0;
    for (const char* part : {"Delivered", "Turned Away", "Unused", "Waiting", "Dropped", "Incomplete", "Refused",
                             "Undescribed", "Missed", "Dropped by Camera"}) {
        sum += values[part];
    }
    return sum;
}

class FrameQueueTest : public TestSupport::SoftwareDeviceFixture {
protected:
    FrameQueueTest() : m_Serial(SoftwareDevices::defaultDevices()[0].serial) {
        m_Camera = &open(SoftwareDevices::defaultDevices()[0]);
        SoftwareDevices::setAsFastAsAsked(m_Serial, true);
        setRegion(camera(), 64, 48);
    }

    Camera& camera() const { return *m_Camera; }
    FrameQueue openQueue(std::size_t capacity, WhenFull whenFull = WhenFull::HoldBack) const {
        return camera().openFrameQueue({capacity, whenFull, {}});
    }
    void failCaptures(std::uint32_t count, std::uint32_t error) const {
        SoftwareDevices::failNext(m_Serial, Operation::sdkCaptureVideoFrames, count, error);
    }
    /// The status with which a wait ends that begins while the stream runs without frames.
    Status endOfAWait(const std::function<void(FrameQueue&)>& end) {
        SoftwareDevices::clearFaults();
        camera().connect();
        failCaptures(kEndlessly, SoftwareDevices::kTimedOut);
        FrameQueue queue = openQueue(2);
        camera().startStream();
        auto waiter = std::async(std::launch::async, [&] { return queue.pop().status; });
        end(queue);
        EXPECT_EQ(waiter.wait_for(kLongEnough), std::future_status::ready);
        return waiter.get();
    }

    const std::uint32_t m_Serial;
    Camera* m_Camera;
};

TEST_F(FrameQueueTest, HasEveryFrameOfEveryRunOnceAndInOrder) {
    FrameQueue queue = openQueue(4);
    EXPECT_EQ(queue.waitForRun(std::chrono::nanoseconds(0)), Status::TimedOut);
    for (std::uint64_t run = 1; run <= 3; ++run) {
        camera().startStream();
        EXPECT_EQ(queue.waitForRun(kLongEnough), Status::Frame);
        std::uint64_t number = 0;
        FrameInformation last;
        for (const Frame& frame : queue) {
            const FrameInformation& information = frame.information;
            ASSERT_EQ(information.run, run);
            ASSERT_EQ(information.number, ++number);
            ASSERT_GE(information.arrival, last.arrival);
            ASSERT_EQ(frame.image->getWidth(), 64U);
            ASSERT_EQ(frame.image->getFormat(), Imaging::IMAGE_FORMAT::BAYER_RGGB);
            last = information;
            if (number == 50) {
                camera().stopStream();
            }
        }
        EXPECT_GE(number, 50U);
        EXPECT_EQ(last.exposureMs, std::stod(value(camera(), "Video Exposure")));
        EXPECT_EQ(queue.pop().status, Status::Stopped);
        auto counters = valuesOf(queue.getCounters());
        EXPECT_EQ(sumOf(counters), counters["Captured"]);
        EXPECT_EQ(counters["Captured"], counters["Delivered"] + counters["Dropped"]) << "at the end";
    }
}

/// What several consumers of one camera saw.
class Witness {
public:
    void see(const Frame& frame) {
        const std::lock_guard lock(m_Mutex);
        const void* const address = frame.image->getDataAddress();
        m_Addresses.insert(address);
        EXPECT_EQ(m_AddressOf.emplace(frame.information.number, address).first->second, address) << "a copy";
    }
    std::size_t addresses() const { return m_Addresses.size(); }

private:
    std::mutex m_Mutex;
    std::map<std::uint64_t, const void*> m_AddressOf; ///< by number; its memory is reused
    std::set<const void*> m_Addresses;
};

TEST_F(FrameQueueTest, ConsumersShareFramesWithoutACopyAndLoseOnlyWhatTheyAllow) {
    struct Case {
        unsigned width, height, consumers;
        std::uint64_t frames;
    };
    constexpr std::array kPolicies{WhenFull::HoldBack, WhenFull::DropOldest, WhenFull::DropNewest};
    for (const Case& one : {Case{64, 48, 1, 2000}, Case{64, 48, 3, 1000}, Case{2592, 1944, 8, 60}}) {
        setRegion(camera(), one.width, one.height);
        Witness witness;
        std::vector<FrameQueue> queues;
        std::vector<std::future<std::uint64_t>> consumers;
        for (unsigned i = 0; i < one.consumers; ++i) {
            queues.push_back(openQueue(2 + i, kPolicies[i % kPolicies.size()]));
        }
        camera().startStream();
        for (FrameQueue& queue : queues) {
            consumers.push_back(std::async(std::launch::async, [&] {
                std::uint64_t number = 0;
                for (const Frame& frame : queue) {
                    EXPECT_GT(frame.information.number, number);
                    number = frame.information.number;
                    witness.see(frame);
                }
                return number;
            }));
        }
        EXPECT_EQ(camera().getImage()->getWidth(), one.width) << "beside queues";
        EXPECT_TRUE(
            TestSupport::eventually([&] { return valuesOf(queues[0].getCounters())["Delivered"] >= one.frames; }));
        camera().stopStream();
        const std::uint64_t last = consumers[0].get();
        EXPECT_GE(last, one.frames);
        for (std::size_t i = 0; i < queues.size(); ++i) {
            auto counters = valuesOf(queues[i].getCounters());
            if (i > 0) {
                EXPECT_LE(consumers[i].get(), last + 1);
            }
            EXPECT_EQ(sumOf(counters), counters["Captured"]);
            EXPECT_EQ(counters["Missed"] + counters["Incomplete"] + counters["Refused"], 0U);
        }
        EXPECT_LE(witness.addresses(), 2 * one.consumers * (2 + one.consumers) + 80) << "memory is reused";
    }
    auto counters = valuesOf(camera().getStreamCounters());
    EXPECT_EQ(sumOf(counters), counters["Captured"]);
}

TEST_F(FrameQueueTest, LossesAreCountedByReasonAndLeaveAGapInTheNumbers) {
    struct Case {
        const char* counter;
        std::function<void()> inject;
    };
    const std::vector<Case> cases{
        {"Incomplete", [&] { SoftwareDevices::truncateFrames(m_Serial, 3, 100); }},
        {"Refused", [&] { failCaptures(3, SoftwareDevices::kInternalError); }},
        {"Dropped by Camera", [&] { SoftwareDevices::dropFrames(m_Serial, 3); }},
        {"Undescribed",
         [&] {
             SoftwareDevices::failNext(m_Serial, Operation::sdkGetVideoImageFormat, 3, SoftwareDevices::kInternalError);
         }},
    };
    for (const Case& one : cases) {
        const auto before = valuesOf(camera().getStreamCounters());
        FrameQueue queue = openQueue(4);
        one.inject();
        camera().startStream();
        for (std::uint64_t number : {4U, 5U, 6U}) {
            EXPECT_EQ(queue.pop(kLongEnough).frame.information.number, number) << one.counter;
        }
        camera().stopStream();
        auto counters = valuesOf(queue.getCounters());
        EXPECT_EQ(counters[one.counter], 3U) << one.counter;
        EXPECT_EQ(counters["Captured"], 3 + counters["Delivered"] + counters["Waiting"] + counters["Dropped"]);
        EXPECT_EQ(valuesOf(camera().getStreamCounters())[one.counter], before.at(one.counter) + 3);
    }
    auto counters = valuesOf(camera().getStreamCounters());
    EXPECT_EQ(sumOf(counters), counters["Captured"]);
    EXPECT_EQ(counters["Incomplete Bytes Received"], 300U);
    EXPECT_EQ(counters["Incomplete Bytes Expected"], 3U * 64 * 48);
}

TEST_F(FrameQueueTest, FramesThatComeWhileAQueueHoldsTheStreamBackAreMissed) {
    SoftwareDevices::setAsFastAsAsked(m_Serial, false); // the device captures whether or not a frame is taken
    FrameQueue queue = openQueue(1);
    camera().startStream();
    ASSERT_TRUE(TestSupport::eventually(
        [&] { return camera().getStreamStatistics().getFrameCount(STREAM_TYPE::Received) > 6; }));
    std::uint64_t last = 0;
    while (last < 7) {
        last = queue.pop(kLongEnough).frame.information.number;
    }
    camera().stopStream();
    auto counters = valuesOf(queue.getCounters());
    EXPECT_GT(counters["Missed"], 0U);
    EXPECT_EQ(sumOf(counters), counters["Captured"]);
}

TEST_F(FrameQueueTest, EveryWaitEndsWithItsReason) {
    EXPECT_EQ(endOfAWait([&](FrameQueue&) { camera().stopStream(); }), Status::Stopped);
    EXPECT_EQ(endOfAWait([&](FrameQueue&) { camera().suspend(); }), Status::Suspended);
    camera().stopStream();
    EXPECT_EQ(openQueue(1).pop(kLongEnough).status, Status::Suspended);
    EXPECT_EQ(endOfAWait([&](FrameQueue& queue) { queue.close(); }), Status::Closed);
    camera().stopStream();
    EXPECT_EQ(endOfAWait([&](FrameQueue&) { failCaptures(kEndlessly, SoftwareDevices::kCaptureEnded); }),
              Status::RunEnded);
    camera().stopStream();
    EXPECT_EQ(endOfAWait([&](FrameQueue& queue) {
                  EXPECT_EQ(queue.pop(std::chrono::milliseconds(1)).status, Status::TimedOut);
                  EXPECT_EQ(queue.tryPop().status, Status::TimedOut);
                  camera().disconnect();
              }),
              Status::Stopped);
    EXPECT_EQ(endOfAWait([&](FrameQueue&) {
                  SoftwareDevices::unplug(m_Serial);
                  TestSupport::dropVanishedCameras();
              }),
              Status::CameraGone);
    FrameQueue queue = openQueue(1);
    EXPECT_EQ(queue.waitForRun(), Status::CameraGone);
    Camera::unitialisedWorkpace();
    EXPECT_EQ(queue.pop().status, Status::CameraGone) << "the queue outlives its camera";
}

TEST_F(FrameQueueTest, WhatEndsAStreamDoesNotWaitForAFullQueue) {
    const auto unplug = [&] {
        SoftwareDevices::unplug(m_Serial);
        TestSupport::dropVanishedCameras();
    };
    const std::vector<std::pair<std::function<void()>, bool>> ends{
        {[&] { camera().stopStream(); }, true},
        {[&] { camera().suspend(); }, true},
        {[&] { camera().disconnect(); }, true},
        {unplug, false}, // a capture in progress fails then, and is tried again until the check
    };
    for (const auto& [end, isCameraThere] : ends) {
        camera().connect();
        FrameQueue queue = openQueue(1);
        const auto captures = [] { return SoftwareDevices::calls(Operation::sdkCaptureVideoFrames); };
        const std::uint64_t before = captures();
        camera().startStream();
        EXPECT_TRUE(TestSupport::eventually([&] { return queue.size() == 1 && captures() == before + 2; }));
        end();
        EXPECT_FALSE(camera().isStreaming());
        EXPECT_TRUE(!isCameraThere || captures() == before + 2) << "the camera is held back";
        EXPECT_TRUE(queue.pop(kLongEnough)) << "what waits stays available";
    }
}

TEST_F(FrameQueueTest, QueuesComeAndGoDuringARun) {
    camera().startStream();
    FrameQueue last = openQueue(1, WhenFull::DropOldest);
    for (int i = 0; i < 50; ++i) {
        FrameQueue blocking = openQueue(1);
        const std::uint64_t newest = blocking.pop(kLongEnough).frame.information.number;
        FrameQueue next = openQueue(2, WhenFull::DropOldest);
        last = std::move(blocking); // closes the former one
        EXPECT_TRUE(last.pop(kLongEnough));
        last = std::move(next); // closes the one that holds the stream back, also when it is full again
        EXPECT_GT(last.pop(kLongEnough).frame.information.number, newest) << "no frame is older than its queue";
    }
    EXPECT_TRUE(last.pop(kLongEnough));
}

TEST_F(FrameQueueTest, InformationFollowsTheSettingsWhileTheStreamRuns) {
    camera().startStream();
    FrameQueue queue = openQueue(1);
    for (const double exposure : {2.0, 3.0}) {
        set(camera(), "Video Exposure", std::to_string(exposure));
        const double written = std::stod(value(camera(), "Video Exposure"));
        EXPECT_TRUE(
            TestSupport::eventually([&] { return queue.pop(kLongEnough).frame.information.exposureMs == written; }));
    }
    camera().stopStream();
    set(camera(), "Streaming Mode", "Still");
    set(camera(), "Still Exposure", "4");
    camera().startStream();
    EXPECT_TRUE(TestSupport::eventually([&] { return queue.pop(kLongEnough).frame.information.exposureMs == 4.0; }));
}

TEST_F(FrameQueueTest, RefusesWhatCannotBe) {
    for (const std::size_t capacity : {std::size_t{0}, kMaximumQueueCapacity + 1}) {
        EXPECT_THROW(openQueue(capacity), KestrelException_InvalidArgument);
    }
}

TEST_F(FrameQueueTest, TheCallbackGetsEveryFrameAndItsRemovalWaitsForIt) {
    TestSupport::Event called;
    std::atomic<bool> runs{false};
    std::vector<std::uint64_t> numbers;
    const auto onFrame = [&](const Frame& frame) {
        runs = true;
        numbers.push_back(frame.information.number);
        for (const auto& forbidden : std::vector<std::function<void()>>{[] { Camera::unitialisedWorkpace(); },
                                                                        [&] { camera().setFrameCallback({}); }}) {
            EXPECT_STREQ(TestSupport::expectThrown<KestrelException>(forbidden).who(), "WouldWaitForItself");
        }
        called.raise();
        runs = false;
        throw std::runtime_error("dropped");
    };
    camera().setFrameCallback(onFrame, {2, WhenFull::HoldBack, "callback"});
    for (int run = 1; run <= 2; ++run) {
        camera().startStream();
        EXPECT_TRUE(called.wait(20 * run));
        EXPECT_EQ(valuesOf(camera().getStreamCounters()).count("Dropped by callback"), 1U);
        camera().stopStream();
    }
    camera().startStream();
    camera().setFrameCallback({});
    EXPECT_FALSE(runs);
    const int calls = called.count();
    camera().getImage();
    EXPECT_EQ(called.count(), calls);
    EXPECT_EQ(numbers[0], 1U);
    EXPECT_EQ(numbers[19], 20U);

    camera().setFrameCallback([&](const Frame&) { called.raise(); });
    EXPECT_TRUE(called.wait(calls + 1));
    Camera::unitialisedWorkpace(); // waits for the callback as well
}

} // namespace
