// SPDX-License-Identifier: Apache-2.0

#include <cfloat>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DescriptionCheck.h"
#include "Gvcp.h"
#include "Numbers.h"
#include "ZipFile.h"

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

TEST(GvcpTest, KnowsThePlaceOfADescriptionInTheCamera) {
    for (const char* url : {"Local:camera.xml;20000;1A2b", "local:camera.zip;20000;1A2B?SchemaVersion=1.1.0",
                            "Local:///camera.xml;0x20000;0x1A2B"}) {
        const auto place = Gvcp::placeOfDescription(url);
        ASSERT_TRUE(place) << url;
        EXPECT_EQ(place->address, 0x20000U);
        EXPECT_EQ(place->size, 0x1A2BU);
    }
    for (const char* url :
         {"", "Local:", "Local:a;10", "Local:a;10;", "Local:a;10;zz", "File:a;10;10", "http://10.0.0.1/a.xml;1;2",
          "Local:a;10;10000000000000000", "Local:a;100000000;10", "Local:;10", ";", ";;"}) {
        EXPECT_FALSE(Gvcp::placeOfDescription(url)) << url;
    }
}

std::string described(const std::string& features) {
    return "<RegisterDescription>" + features + "</RegisterDescription>";
}

/// A chain in which each feature is computed from the next one, several times.
std::string chain(std::size_t length, std::size_t times) {
    std::string features;
    for (std::size_t i = 0; i < length; ++i) {
        features += "<IntSwissKnife Name='A" + std::to_string(i) + "'>";
        for (std::size_t variable = 0; variable < times; ++variable) {
            features += "<pVariable Name='V'>A" + std::to_string(i + 1) + "</pVariable>";
        }
        features += "</IntSwissKnife>";
    }
    return features;
}

TEST(DescriptionCheckTest, AcceptsWhatEndsAndRefusesWhatDoesNot) {
    const std::string width = "<Integer Name='Width'><pValue>W</pValue><pMax>Room</pMax></Integer>"
                              "<IntSwissKnife Name='Room'><pVariable Name='X'>OffsetX</pVariable></IntSwissKnife>"
                              "<Integer Name='OffsetX'><pValue>X</pValue><pMax>Rest</pMax></Integer>"
                              "<IntSwissKnife Name='Rest'><pVariable Name='W'>Width</pVariable></IntSwissKnife>";
    for (const std::string& features : {std::string(), width, chain(100, 1), chain(15, 2),
                                        std::string("<IntReg Name='A'><Length>8</Length></IntReg>"),
                                        std::string("<StringReg Name='A'><pLength>B</pLength></StringReg>"),
                                        std::string("<Integer Name='A'><pIsLocked>A</pIsLocked></Integer>")}) {
        const std::string xml = described(features);
        EXPECT_EQ(checkDescription(xml + "\n<after>"), xml.size()) << features;
    }
    const struct {
        std::string xml;
        const char* why;
    } cases[] = {
        {"", "empty"},
        {"<html/>", "none of GenICam"},
        {"<RegisterDescription><Integer>", "no complete XML"},
        {described("<Integer></Float>"), "no complete XML"},
        {"<!DOCTYPE a [<!ENTITY b 'c'>]>" + described(""), "document type"},
        {described("<Integer Name='A'><pValue> A </pValue></Integer>"), "refer to themselves"},
        {described("<Integer Name='A'><pValue>B</pValue></Integer><IntReg Name='B'><IntSwissKnife>"
                   "<pVariable Name='V'>A</pVariable></IntSwissKnife></IntReg>"),
         "refer to themselves"},
        {described("<Integer Name='A'><pMax>B</pMax></Integer><IntSwissKnife Name='B'>"
                   "<pVariable Name='V.Max'>A</pVariable></IntSwissKnife>"),
         "refer to themselves"},
        {described("<StructReg><pAddress>A</pAddress><StructEntry Name='A'/></StructReg>"), "refer to themselves"},
        {described(chain(1000, 1)), "too many others"},
        {described(chain(40, 2)), "too many others"},
        {described("<IntReg Name='A'><Length>-4</Length></IntReg>"), "invalid length"},
        {described("<IntReg Name='A'><Length>0x7FFFFFFFFFFFFFFF</Length></IntReg>"), "invalid length"},
        {described("<IntReg Name='A'><pLength>B</pLength></IntReg>"), "variable length"},
        {described("<SwissKnife Name='A'><Formula>" + std::string(20000, '(') + "</Formula></SwissKnife>"), "too long"},
    };
    for (const auto& [xml, why] : cases) {
        EXPECT_THAT([&xml = xml] { checkDescription(xml); },
                    ::testing::ThrowsMessage<std::runtime_error>(::testing::HasSubstr(why)))
            << xml.substr(0, 200);
    }
}

/// A ZIP file with one file "a", and what its records say of it.
std::string zipOf(const std::string& packed, char method, std::uint32_t size) {
    const auto little = [](std::uint64_t number, int bytes) {
        std::string text;
        for (; bytes > 0; --bytes, number >>= 8) {
            text += static_cast<char>(number);
        }
        return text;
    };
    const std::string sizes = little(0, 4) + little(packed.size(), 4) + little(size, 4) + little(1, 2) + little(0, 2);
    const std::string local =
        "PK\3\4" + little(20, 4) + little(static_cast<unsigned char>(method), 2) + little(0, 4) + sizes + "a";
    const std::string entry = "PK\1\2" + little(20, 2) + little(20, 4) + little(static_cast<unsigned char>(method), 2) +
                              little(0, 4) + sizes + little(0, 14) + "a";
    return local + packed + entry + "PK\5\6" + little(0, 4) + little(1, 2) + little(1, 2) + little(entry.size(), 4) +
           little(local.size() + packed.size(), 4) + little(0, 2);
}

TEST(ZipFileTest, IsExpandedAsFarAsItsDirectorySays) {
    const std::string deflated("\x4b\x4c\x4a\x4e\x49\x4d\x4b\xac\x02\x00", 10); // "abcdefaz"
    EXPECT_EQ(unzipFirst(zipOf("text", 0, 4), 4), "text");
    EXPECT_EQ(unzipFirst(zipOf(deflated, 8, 8), 8), "abcdefaz");
    const std::string whole = zipOf(deflated, 8, 8);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THROW(unzipFirst(whole.substr(0, size), 100), std::runtime_error) << size;
    }
    const struct {
        std::string file;
        const char* why;
    } cases[] = {{zipOf(deflated, 8, 0xFFFFFFFF), "more than any description"},
                 {zipOf(deflated, 8, 7), "broken"},
                 {zipOf(deflated, 8, 9), "broken"},
                 {zipOf("text", 0, 5), "broken"},
                 {zipOf("text", 8, 4), "broken"},
                 {zipOf("text", 12, 4), "unknown way"}};
    for (const auto& [file, why] : cases) {
        EXPECT_THAT([&file = file] { unzipFirst(file, 1000); },
                    ::testing::ThrowsMessage<std::runtime_error>(::testing::HasSubstr(why)));
    }
}

} // namespace
