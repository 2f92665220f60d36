// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Watchdog.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "Exceptions/KestrelException.h"
#include "Support/Event.h"

namespace {

using TestSupport::Event;
using Utilities::Watchdog;

constexpr int kNeverMs = 1'000'000'000;

TEST(Watchdog, StopWakesAWaitingThreadWithoutACall) {
    Event called;
    Watchdog watchdog;
    watchdog.stop(); // idle: nothing happens
    watchdog.start(kNeverMs, [&] {
        called.raise();
        return true;
    });
    watchdog.stop(); // would not return before the period ends
    EXPECT_EQ(called.count(), 0);
}

TEST(Watchdog, AFalseAnswerEndsThePolling) {
    Event called;
    Watchdog watchdog;
    watchdog.start(0, [&] {
        called.raise();
        return false;
    });
    EXPECT_TRUE(called.wait());
    watchdog.stop();
    EXPECT_EQ(called.count(), 1);
    watchdog.restart();
    EXPECT_TRUE(called.wait(2)) << "restart polls the same function again";
}

TEST(Watchdog, ASecondStartReplacesTheFirst) {
    Event first;
    Event second;
    Watchdog watchdog;
    watchdog.start(0, [&] {
        first.raise();
        return true;
    });
    EXPECT_TRUE(first.wait());
    watchdog.start(0, [&] {
        second.raise();
        return true;
    });
    const int calls = first.count();
    EXPECT_TRUE(second.wait(3)) << "a period of 0 polls back to back";
    EXPECT_EQ(first.count(), calls);
}

TEST(Watchdog, StopWaitsForARunningCall) {
    Event entered;
    Event release;
    std::atomic<bool> finished{false};
    Watchdog watchdog;
    watchdog.start(0, [&] {
        entered.raise();
        release.wait();
        finished = true;
        return true;
    });
    ASSERT_TRUE(entered.wait());
    std::thread releaser([&] { release.raise(); });
    watchdog.stop();
    EXPECT_TRUE(finished);
    releaser.join();
}

TEST(Watchdog, ACallbackThatWouldWaitForItselfIsToldSo) {
    Event refused;
    std::string words;
    Watchdog watchdog;
    watchdog.start(0, [&] {
        for (const auto& operation : {&Watchdog::stop, &Watchdog::restart}) {
            try {
                (watchdog.*operation)();
            } catch (const KestrelExceptions::KestrelException& exception) {
                words += std::string(exception.who()) + ";";
            }
        }
        refused.raise();
        return false;
    });
    ASSERT_TRUE(refused.wait());
    watchdog.stop();
    EXPECT_EQ(words, "WouldWaitForItself;WouldWaitForItself;");
}

TEST(Watchdog, AnEscapingExceptionDoesNotEndThePolling) {
    Event called;
    Watchdog watchdog;
    watchdog.start(0, [&]() -> bool {
        called.raise();
        throw std::runtime_error("escaped");
    });
    EXPECT_TRUE(called.wait(3));
}

} // namespace
