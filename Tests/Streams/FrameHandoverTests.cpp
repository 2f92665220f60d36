// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameHandover.h"

#include <gtest/gtest.h>

namespace {

using CameraInterface::FrameHandover;
using Outcome = FrameHandover::Outcome;
using Bytes = std::vector<unsigned char>;

constexpr std::chrono::nanoseconds kNoTime{0};
constexpr std::chrono::hours kLong{1};

TEST(FrameHandover, WhoCameFirstIsServedFirstAndATimeoutTakesNobodyElsesRequest) {
    FrameHandover handover;
    handover.deliver({9}); // before the first request
    FrameHandover::Request first(handover);
    FrameHandover::Request second(handover);
    {
        FrameHandover::Request impatient(handover);
        EXPECT_EQ(impatient.wait(kNoTime), Outcome::TimedOut);
    }
    FrameHandover::Request last(handover);
    for (FrameHandover::Request* const request : {&first, &second}) {
        EXPECT_TRUE(handover.isRequested());
        EXPECT_EQ(request->wait(kNoTime), Outcome::TimedOut) << "its place is kept";
        handover.deliver({static_cast<unsigned char>(request == &first ? 1 : 2)});
    }
    handover.close(Outcome::CaptureEnded);
    handover.close(Outcome::Stopped);
    EXPECT_EQ(first.wait(kLong), Outcome::Frame);
    EXPECT_EQ(first.takeImageData(), Bytes{1});
    EXPECT_EQ(second.wait(kLong), Outcome::Frame);
    EXPECT_EQ(second.takeImageData(), Bytes{2});
    EXPECT_EQ(last.wait(kLong), Outcome::CaptureEnded);
    EXPECT_EQ(FrameHandover::Request(handover).wait(kLong), Outcome::CaptureEnded);
}

} // namespace
