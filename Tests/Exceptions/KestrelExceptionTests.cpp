// SPDX-License-Identifier: Apache-2.0

#include "Exceptions/KestrelExceptions.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

using namespace KestrelExceptions;

TEST(KestrelException, EachPartHasALineUnlessItIsEmpty) {
    EXPECT_STREQ(KestrelException::create("E", "F", 7, "D.").what(),
                 "Exception: E.\nThrown in file [F] at line #7.\nD.");
    EXPECT_STREQ(KestrelException_Property("E", "F", 7, "D.", "P").what(),
                 "Exception: E.\nThrown in file [F] at line #7.\nError with property {P}: D.");
    EXPECT_STREQ(KestrelException::create("E", "", 7, "D.").what(), "Exception: E.\nD.");
    EXPECT_STREQ(KestrelException::create("E", "F", 7, "").what(), "Exception: E.\nThrown in file [F] at line #7.");
    EXPECT_STREQ(KestrelException::create("E", "", 7, "").what(), "Exception: E.");
    EXPECT_STREQ(KestrelException_Function("E", "", 7, "", "").why(), "Error with function { }: ");
}

TEST(KestrelException, CopiesOutliveTheirSource) {
    auto source = std::make_unique<KestrelException_Property>("E", "F", 7, "D.", "P");
    KestrelException_Property copy("x", "x", 1, "x", "x");
    copy = *source;
    const KestrelException base = *source;
    const std::string what = source->what();
    source.reset();
    EXPECT_EQ(copy.what(), what);
    EXPECT_EQ(base.what(), what);
}

} // namespace
