#include "Utilities/TextConversion.h"

#include <gtest/gtest.h>

#include "Support/Throws.h"

namespace {

using TestSupport::expectStandard;
using Utilities::parseInteger;

TEST(ParseInteger, FindsTheBaseItself) {
    const std::vector<std::pair<std::string, int>> cases{
        {"10", 10},
        {"0x10", 16},
        {"0X1f", 31},
        {"010", 8},
        {"0", 0},
        {" \t-7z", -7},
        {"+5", 5},
        {"-0x10", -16},
        {"0x", 0},
        {"08", 0},
        {"0xg", 0},
        {"12 34", 12},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
    };
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(parseInteger(text), number) << text;
    }
}

TEST(ParseInteger, RefusesWithTheTextsOfTheStandardConversion) {
    for (const char* text : {"", " ", "x", "-", "+-5", "--5"}) {
        expectStandard<std::invalid_argument>([&] { parseInteger(text); }, "invalid stoi argument");
    }
    for (const char* text : {"2147483648", "-2147483649", "0x80000000", "99999999999999999999999"}) {
        expectStandard<std::out_of_range>([&] { parseInteger(text); }, "stoi argument out of range");
    }
}

} // namespace
