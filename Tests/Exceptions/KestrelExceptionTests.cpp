// SPDX-License-Identifier: Apache-2.0

#include "Exceptions/KestrelExceptions.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace KestrelExceptions;

TEST(KestrelException, SubjectsArePutIntoTheirFixedSentences) {
    const std::vector<std::pair<std::shared_ptr<KestrelException>, std::string>> cases{
        {std::make_shared<KestrelException>(KestrelException::create("E", "F", 7, "D.")), "D."},
        {std::make_shared<KestrelException_Camera>("E", "F", 7, "D.", "42"),
         "Error with camera {serial number: 42}: D."},
        {std::make_shared<KestrelException_Property>("E", "F", 7, "D.", "P"), "Error with property {P}: D."},
        {std::make_shared<KestrelException_Function>("E", "F", 7, "D.", "N"), "Error with function {N }: D."},
        {std::make_shared<KestrelException_PropertyComparison>("E", "F", 7, "D.", "A", "B"),
         "Error when comparing properties {A & B }: D."},
        {std::make_shared<KestrelException_CameraState>("E", "F", 7, "D.", "connected", "suspended"),
         "Failed to transition from connected to suspended. D."},
        {std::make_shared<KestrelException_InvalidArgument>("E", "F", 7, "D.", "mode"),
         "The argument \"mode\" is invalid. D."},
        {std::make_shared<KestrelException_Stream>("E", "F", 7, "D.", "video"),
         "An error with the video stream occured. D."},
    };
    for (const auto& [exception, why] : cases) {
        EXPECT_STREQ(exception->who(), "E");
        EXPECT_STREQ(exception->where(), "Thrown in file [F] at line #7.");
        EXPECT_EQ(exception->why(), why);
        EXPECT_EQ(exception->what(), "Exception: E.\nThrown in file [F] at line #7.\n" + why);
    }
}

TEST(KestrelException, EmptyPartsHaveNoLine) {
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
