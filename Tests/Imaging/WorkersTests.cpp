// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Workers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "Support/Event.h"

namespace {

using Imaging::Workers;
using TestSupport::Event;

TEST(Workers, OfManyThreadsDoEveryPieceOnce) {
    Workers workers(2);
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&workers, &wrong, caller] {
            for (int round = 0; round < 100; ++round) {
                std::array<int, 64> calls{};
                const int pieces = round % 64 + 1;
                workers.share(pieces, caller + 1, [&](int piece) { ++calls[static_cast<std::size_t>(piece)]; });
                workers.runElsewhere([&] { ++calls[0]; });
                --calls[0];
                wrong += std::count(calls.begin(), calls.end(), 1) == pieces ? 0 : 1;
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(Workers, TakePartWhileTheCallerIsBusy) {
    Workers workers(1);
    Event begun;
    workers.share(2, 2, [&](int) {
        begun.raise();
        EXPECT_TRUE(begun.wait(2));
    });
    std::thread::id elsewhere;
    workers.runElsewhere([&] { elsewhere = std::this_thread::get_id(); });
    EXPECT_NE(elsewhere, std::this_thread::get_id());
}

TEST(Workers, HandOnWhatAPieceThrows) {
    Workers workers(1);
    for (int round = 0; round < 50; ++round) {
        const auto throwInSecond = [](int piece) {
            if (piece == 1) {
                throw std::runtime_error("piece");
            }
        };
        EXPECT_THROW(workers.share(1000, 2, throwInSecond), std::runtime_error);
        EXPECT_THROW(workers.runElsewhere([] { throw std::out_of_range("elsewhere"); }), std::out_of_range);
    }
}

TEST(Workers, MayBeClosedUnderWay) {
    for (int round = 0; round < 50; ++round) {
        Workers workers(2);
        std::atomic<int> sum{0};
        Event begun;
        std::thread caller([&] {
            workers.share(100, 3, [&](int piece) {
                begun.raise();
                sum += piece;
            });
            workers.runElsewhere([&] { sum += 1000; });
        });
        begun.wait();
        workers.close();
        caller.join();
        EXPECT_EQ(sum, 4950 + 1000);
        std::thread::id afterwards;
        workers.runElsewhere([&] { afterwards = std::this_thread::get_id(); });
        EXPECT_EQ(afterwards, std::this_thread::get_id());
    }
}

} // namespace
