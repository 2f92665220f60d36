// SPDX-License-Identifier: Apache-2.0

#include <cfloat>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Gvcp.h"
#include "Numbers.h"

namespace {

using namespace GenICamAdapter;

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

TEST(GenICamNumbersTest, AreLimitedAndRoundedToTheStep) {
    struct Case {
        std::int64_t number, minimum, maximum, step, expected;
    };
    for (const Case& c : {Case{7, 0, 100, 4, 8}, Case{5, 0, 100, 4, 4}, Case{6, 0, 100, 4, 8}, Case{101, 0, 99, 4, 96},
                          Case{99, 0, 99, 4, 96}, Case{-5, -7, 7, 5, -7}, Case{kMost, kLeast, kMost, 2, kMost - 1},
                          Case{kLeast, kLeast, kMost, 3, kLeast}, Case{5, 0, 100, 0, 5}, Case{5, 0, 100, -3, 5}}) {
        EXPECT_EQ(toStep(c.number, c.minimum, c.maximum, c.step), c.expected) << c.number << " by " << c.step;
    }
    EXPECT_DOUBLE_EQ(toStep(1.26, 0.0, 10.0, 0.5), 1.5);
    EXPECT_DOUBLE_EQ(toStep(10.0, 0.0, 9.9, 0.5), 9.5);
    EXPECT_DOUBLE_EQ(toStep(1.26, 0.0, 10.0, DBL_MIN), 1.26) << "what Aravis says when there is no step";
    EXPECT_DOUBLE_EQ(toStep(20.0, 0.0, 10.0, 0.0), 10.0);
}

TEST(GenICamNumbersTest, AreTextsWithoutALocale) {
    EXPECT_EQ(textOf(0.1), "0.1");
    EXPECT_EQ(textOf(kLeast), "-9223372036854775808");
    EXPECT_EQ(parseInteger(" 0x10"), 16);
    EXPECT_EQ(parseInteger("-12 px"), -12);
    EXPECT_DOUBLE_EQ(parseFloat("+2.5"), 2.5);
    for (const char* wrong : {"", "wide", "--1", "+-1"}) {
        EXPECT_THROW(parseInteger(wrong), std::invalid_argument) << wrong;
        EXPECT_THROW(parseFloat(wrong), std::invalid_argument) << wrong;
    }
    EXPECT_THROW(parseInteger("9223372036854775808"), std::out_of_range);
    EXPECT_THROW(parseFloat("nan"), std::out_of_range);
    EXPECT_THROW(parseFloat("-inf"), std::out_of_range);
}

TEST(GvcpTest, DescribesACameraAndSurvivesTruncation) {
    std::vector<std::uint8_t> packet{0, 0, 0, 3, 0, 0xF8, 0, 9};
    packet.resize(8 + 0xF8);
    packet[8 + 0x0F] = 0xAB;
    packet[8 + 0x24] = 192;
    packet[8 + 0x27] = 7;
    const std::string vendor = "Maker\n\x7F of cameras  ";
    std::copy(vendor.begin(), vendor.end(), packet.begin() + 8 + 0x48);
    std::fill_n(packet.begin() + 8 + 0xD8, 16, '9'); // fills its field: not terminated
    for (std::size_t size = 0; size < packet.size(); ++size) {
        const std::vector<std::uint8_t> truncated(packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(Gvcp::parseAnswer(truncated.data(), size)) << size;
    }
    const auto answer = Gvcp::parseAnswer(packet.data(), packet.size());
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->id, 9);
    const auto record = Gvcp::parseDiscovery(*answer);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->hardwareAddress, "00:00:00:00:00:AB");
    EXPECT_EQ(record->address, "192.0.0.7");
    EXPECT_EQ(record->vendor, "Maker of cameras");
    EXPECT_EQ(record->serialNumber, "9999999999999999");
    Gvcp::Answer shorter = *answer;
    shorter.size -= 1;
    EXPECT_FALSE(Gvcp::parseDiscovery(shorter));
}

TEST(GvcpTest, KnowsTheSizeOfADescriptionInTheCamera) {
    EXPECT_EQ(Gvcp::sizeOfDescription("Local:camera.xml;10000;1A2b"), 0x1A2BU);
    EXPECT_EQ(Gvcp::sizeOfDescription("local:camera.zip;10000;10?SchemaVersion=1.1.0"), 0x10U);
    for (const char* url : {"", "Local:", "Local:a;10", "Local:a;10;", "Local:a;10;zz", "File:a;10;10",
                            "http://10.0.0.1/a.xml;1;2", "Local:a;10;10000000000000000"}) {
        EXPECT_FALSE(Gvcp::sizeOfDescription(url)) << url;
    }
}

} // namespace
