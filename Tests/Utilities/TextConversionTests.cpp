#include "Utilities/TextConversion.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "Support/Throws.h"

namespace {

using TestSupport::expectStandard;
using Utilities::parseDouble;
using Utilities::parseFloat;
using Utilities::parseInteger;
using Utilities::parseUnsigned;

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

TEST(ParseUnsigned, IsThirtyTwoBitsWide) {
    for (const auto& [text, number] : std::vector<std::pair<std::string, unsigned long>>{
             {"10", 10}, {" +7.5", 7}, {"010", 10}, {"0x10", 0}, {"4294967295", 4294967295}, {"-1", 4294967295}}) {
        EXPECT_EQ(parseUnsigned(text), number) << text;
    }
    for (const auto& [text, number] :
         std::vector<std::pair<std::string, unsigned long>>{{"1A", 26}, {"0x1a", 26}, {"0xg", 0}, {"-f", 4294967281}}) {
        EXPECT_EQ(parseUnsigned(text, 16), number) << text;
    }
    for (const char* text : {"", "x", "-", "--1"}) {
        expectStandard<std::invalid_argument>([&] { parseUnsigned(text); }, "invalid stoul argument");
    }
    for (const char* text : {"4294967296", "-4294967296", "99999999999999999999999"}) {
        expectStandard<std::out_of_range>([&] { parseUnsigned(text); }, "stoul argument out of range");
    }
}

TEST(ParseFloatingPoint, TakesTheNumberAtTheStart) {
    for (const auto& [text, number] : std::vector<std::pair<std::string, double>>{{"12.5", 12.5},
                                                                                  {" \t-1.5e2x", -150},
                                                                                  {"+.5", 0.5},
                                                                                  {"2,5", 2},
                                                                                  {"1e", 1},
                                                                                  {"0x1.8p1", 3},
                                                                                  {"0x", 0},
                                                                                  {"-inf", -INFINITY}}) {
        EXPECT_EQ(parseDouble(text), number) << text;
        EXPECT_EQ(parseFloat(text), static_cast<float>(number)) << text;
    }
    EXPECT_TRUE(std::isnan(parseDouble("nan")));
    for (const char* text : {"", "x", ".", "+-1", "--1", "-"}) {
        expectStandard<std::invalid_argument>([&] { parseDouble(text); }, "invalid stod argument");
        expectStandard<std::invalid_argument>([&] { parseFloat(text); }, "invalid stof argument");
    }
    EXPECT_EQ(parseDouble("1e39"), 1e39);
    expectStandard<std::out_of_range>([&] { parseFloat("1e39"); }, "stof argument out of range");
    expectStandard<std::out_of_range>([&] { parseDouble("-1e999"); }, "stod argument out of range");
}

TEST(ToSixDecimals, WritesFixedNotation) {
    for (const auto& [number, text] : std::vector<std::pair<float, std::string>>{
             {2.5F, "2.500000"},
             {100, "100.000000"},
             {-1.5F, "-1.500000"},
             {0.1F, "0.100000"},
             {1e-9F, "0.000000"},
             {std::numeric_limits<float>::max(), "340282346638528859811704183484516925440.000000"}}) {
        EXPECT_EQ(Utilities::toSixDecimals(number), text);
    }
}

} // namespace
