// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "GenICam/Network.h"

namespace {

/// What ctest takes for "skipped".
constexpr int kSkipped = 77;

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!::testing::GTEST_FLAG(list_tests) && !TestSupport::enterOwnNetwork()) {
        std::puts("Skipped: this system permits no network of one's own (unshare -n).");
        return kSkipped;
    }
    return RUN_ALL_TESTS();
}
