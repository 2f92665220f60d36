// SPDX-License-Identifier: Apache-2.0

#include "Imaging/SharedImagePool.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Imaging::SharedImagePool;

std::shared_ptr<const Imaging::Image> makeSmall(SharedImagePool& pool) {
    return pool.makeImage(8, 8, pool.takeBuffer(64), 8, true, Imaging::IMAGE_FORMAT::MONO);
}

TEST(SharedImagePool, AForkedChildReleasesImagesWhileItsParentWasUsingThePool) {
    const auto pool = std::make_shared<SharedImagePool>();
    {
        // From here on the user thread allocates nothing: AddressSanitizer's allocator stays locked in a child that is
        // forked while another thread allocates.
        const auto first = makeSmall(*pool);
        const auto second = makeSmall(*pool);
    }
    std::atomic<bool> done{false};
    std::atomic<bool> isRunning{false};
    std::thread user([&] {
        while (!done) {
            makeSmall(*pool); // holds the pool's mutex most of the time
            isRunning = true;
        }
    });
    while (!isRunning) {
        std::this_thread::yield();
    }
    for (int child = 0; child < 100 && !HasFailure(); ++child) {
        auto image = makeSmall(*pool);
        const pid_t process = fork();
        if (process == 0) {
            alarm(60); // a child that hangs ends by a signal
            image.reset();
            makeSmall(*pool);
            _exit(0);
        }
        int status = -1;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        EXPECT_EQ(status, 0);
    }
    done = true;
    user.join();
}

} // namespace
