// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cstdio>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

#include "GenICam/GenICamTest.h"

namespace {

using namespace CameraInterface;
using TestSupport::CameraProcess;
using TestSupport::GenICamTest;

/// What an independent client of the same camera prints.
std::string askOtherClient(const std::string& words) {
    const std::string command = "arv-tool-0.8 " + words;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> part{};
    for (std::size_t size = 1; size > 0; text.append(part.data(), size)) {
        size = std::fread(part.data(), 1, part.size(), pipe.get());
    }
    return text;
}

/// A value as that client prints it: real numbers have six digits.
std::string printed(Property& property, const std::string& value) {
    std::array<char, 32> text{};
    switch (property.getType()) {
    case PROPERTY_TYPE::Boolean:
        return value == "Enabled" ? "true" : "false";
    case PROPERTY_TYPE::Float:
        std::snprintf(text.data(), text.size(), "%g", std::stod(value));
        return text.data();
    default:
        return value;
    }
}

/// A feature as that client describes it: "Width = 512 px min:16 max:512 inc:4", with the limits that it has.
std::string describe(Property& property, const std::string& limits) {
    const std::string unit = property.getUnit();
    std::string text = printed(property, property.getValue()) + (unit.empty() ? "" : " " + unit);
    for (const auto& [limit, value] :
         {std::pair{" min:", &Property::getMinimum}, std::pair{" max:", &Property::getMaximum},
          std::pair{" inc:", &Property::getIncrement}}) {
        if (limits.find(limit) != std::string::npos) {
            text += limit + printed(property, (property.*value)());
        }
    }
    return text;
}

/// Compares all features but those in @p except. @return how many
std::size_t compareFeatures(Camera& camera, const std::string& address, const std::set<std::string>& except) {
    const std::string all = askOtherClient("-a " + address + " values");
    const std::regex feature(R"((\w+) *: \[(\w+)\] '(\w+)')");
    std::set<std::string> names;
    std::set<std::string> readOnly;
    std::string wanted;
    for (auto entry = std::sregex_iterator(all.begin(), all.end(), feature); entry != std::sregex_iterator(); ++entry) {
        const std::string name = (*entry)[3];
        if ((*entry)[1] == "Command" || (*entry)[1] == "Register" || except.count(name) != 0) {
            continue;
        }
        wanted += names.insert(name).second ? ' ' + name : "";
        if ((*entry)[2] == "RO") {
            readOnly.insert(name);
        }
    }
    std::istringstream lines(askOtherClient("-a " + address + " control" + wanted));
    camera.connect(); // the other client needs the camera for itself
    std::size_t compared = 0;
    for (std::string line; std::getline(lines, line); ++compared) {
        const std::size_t sign = line.find(" = ");
        const std::string name = line.substr(0, sign);
        Property& property = camera.getProperty(name);
        EXPECT_EQ(line, name + " = " + describe(property, line.substr(sign)));
        EXPECT_EQ(property.isReadOnly(), readOnly.count(name) != 0) << name;
    }
    EXPECT_EQ(compared, names.size());
    return compared;
}

TEST_F(GenICamTest, DescribesFeaturesAsAnotherClientDoes) {
    const CameraProcess one(TestSupport::peer("127.0.0.2", "One"));
    const CameraProcess two(TestSupport::software("127.0.0.3", {}, "Two"));
    lookOn({}, {"127.0.0.2", "127.0.0.3"});
    EXPECT_GE(compareFeatures(listed("Aravis-One"), "127.0.0.2", {}), 20U);
    EXPECT_GE(compareFeatures(listed("Quill-Two"), "127.0.0.3",
                              {"DeviceTemperature",   // changes
                               "DeviceIndicatorMode", // has a value outside of its list, which only the library shows
                               "GevSCSP"}),           // differs from client to client
              60U);
}

} // namespace
