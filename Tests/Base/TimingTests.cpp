// SPDX-License-Identifier: Apache-2.0

#include <limits>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "Streams/StreamStatistics.h"
#include "Utilities/FrameCounter.h"
#include "Utilities/Stopwatch.h"

namespace {

using CameraInterface::STREAM_TYPE;
using CameraInterface::StreamStatistics;
using Utilities::FrameCounter;
using Utilities::Stopwatch;

/// Waits for at least this time, on any load.
void pass(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TEST(Stopwatch, AddsUpIntervalsAndCountsFromTheFirstStart) {
    Stopwatch watch;
    EXPECT_EQ(watch.delta() + watch.elapsed(), 0.0);
    watch.start();
    pass(2);
    watch.stop();
    const double first = watch.elapsed();
    EXPECT_GE(first, 0.002);
    EXPECT_EQ(watch.delta(), first);
    pass(3);
    watch.start();
    EXPECT_GE(watch.elapsed(), first + 0.003) << "a running watch includes pauses";
    pass(1);
    watch.stop();
    EXPECT_DOUBLE_EQ(watch.elapsed(), first + watch.delta()) << "a stopped watch excludes them";
    const double sum = watch.elapsed();
    watch.stop();
    EXPECT_DOUBLE_EQ(watch.elapsed(), sum + watch.delta()) << "a second stop adds the time since the start again";
    watch.start();
    pass(1);
    watch.start();
    watch.stop();
    EXPECT_GE(watch.elapsed(), sum + 0.001) << "a second start is a lap";
    watch.reset();
    EXPECT_EQ(watch.delta() + watch.elapsed(), 0.0);
}

TEST(FrameCounter, DividesByTheTimeSinceTheOldestFrame) {
    FrameCounter counter;
    EXPECT_EQ(counter.getFramesPerSecond(), 0.0);
    counter.setDesiredIntervalTime(1000.0);
    for (int frame = 0; frame < 10; ++frame) {
        counter.incrementFrameCount();
    }
    pass(20);
    const double rate = counter.getFramesPerSecond();
    EXPECT_GT(rate, 0.0);
    EXPECT_LE(rate, 10 / 0.020);
    counter.setDesiredIntervalTime(0.010);
    EXPECT_EQ(counter.getFramesPerSecond(), 0.0) << "all frames are older than the interval";
    counter.setDesiredIntervalTime(1000.0);
    EXPECT_EQ(counter.getFramesPerSecond(), 0.0) << "dropped frames do not come back";
    counter.incrementFrameCount();
    counter.setDesiredIntervalTime(std::numeric_limits<double>::quiet_NaN());
    pass(1);
    EXPECT_EQ(counter.getFramesPerSecond(), 0.0) << "no age is less than NaN";
    counter.setDesiredIntervalTime(1000.0);
    counter.incrementFrameCount();
    counter.resetFrameCount();
    EXPECT_EQ(counter.getFramesPerSecond(), 0.0);
}

TEST(StreamStatistics, CopiesShareTheirCountersOnly) {
    StreamStatistics source;
    for (const STREAM_TYPE type : {STREAM_TYPE::Reserved, STREAM_TYPE::Delivered, STREAM_TYPE::Received}) {
        EXPECT_EQ(source.getFramesPerSecond(type), 0.0);
        EXPECT_EQ(source.getDesiredIntervalTime(type), 1.0);
    }
    source.setDesiredIntervalTime(STREAM_TYPE::Delivered, 1000.0);
    source.setCaptureTime(0.25);
    StreamStatistics copy = source;
    copy.incrementFrameCount(STREAM_TYPE::Delivered);
    copy.setCaptureTime(0.5);
    copy.setImageDataTransferTime(0.125);
    pass(1);
    EXPECT_GT(source.getFramesPerSecond(STREAM_TYPE::Delivered), 0.0);
    EXPECT_EQ(source.getFramesPerSecond(STREAM_TYPE::Received), 0.0);
    EXPECT_EQ(source.getDesiredIntervalTime(STREAM_TYPE::Reserved), 1.0);
    EXPECT_EQ(source.getCaptureTime(), 0.25);
    EXPECT_EQ(source.getImageDataTransferTime(), 0.0);
    copy.incrementIncompleteFrameCount();
    StreamStatistics& itself = source;
    source = std::move(itself);
    EXPECT_EQ(source.getIncompleteFrameCount(), 1U);
    EXPECT_EQ(source.getFrameCount(STREAM_TYPE::Delivered), 1U);
}

} // namespace
